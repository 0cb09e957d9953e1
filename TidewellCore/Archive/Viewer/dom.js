// Making elements. Text of the archive enters the page only as text.

const byId = (id) => document.getElementById(id);

// element("a.link", {href}, child, …): properties are set as such, names with a dash
// and `role` as attributes; children are elements or strings, empty ones are left out.
function element(selector, properties = {}, ...children) {
  const [tag, ...classes] = selector.split(".");
  const made = document.createElement(tag);
  if (classes.length) made.className = classes.join(" ");
  for (const [name, value] of Object.entries(properties)) {
    if (value === undefined || value === null) continue;
    if (name.includes("-") || name === "role") made.setAttribute(name, value);
    else made[name] = value;
  }
  made.append(...children.filter((child) => child !== null && child !== undefined && child !== ""));
  return made;
}

// One of the symbols that stand in the page.
function icon(name) {
  const svg = document.createElementNS("http://www.w3.org/2000/svg", "svg");
  svg.setAttribute("class", "icon");
  svg.setAttribute("aria-hidden", "true");
  const use = document.createElementNS("http://www.w3.org/2000/svg", "use");
  use.setAttribute("href", "#icon-" + name);
  svg.append(use);
  return svg;
}

// Pieces of {string, match} with the matches marked.
function marked(pieces) {
  return pieces.map((piece) => (piece.match ? element("mark", {}, piece.string) : piece.string));
}

// The chat's picture, else its initials on its own colour.
function avatarOf(chat) {
  const initials = initialsOf(chat.name || "");
  const made = element("span.avatar.tone-" + toneOf(chat.name || ""), { "aria-hidden": "true" });
  const plain = () => made.append(initials && !chat.group ? initials : icon(chat.group ? "group" : "person"));
  if (!chat.avatar) {
    plain();
    return made;
  }
  const picture = element("img", { alt: "", decoding: "async", draggable: false });
  picture.addEventListener("error", () => {
    picture.remove();
    plain();
  });
  picture.src = addressOf(chat.avatar);
  made.append(picture);
  return made;
}

function show(shown, ...elements) {
  for (const one of elements) one.hidden = !shown;
}

// A large archive must not freeze the page: long work pauses here between its slices.
function nextTurn() {
  return new Promise((resolve) => {
    const channel = new MessageChannel();
    channel.port1.onmessage = () => {
      channel.port1.close();
      resolve();
    };
    channel.port2.postMessage(null);
  });
}
