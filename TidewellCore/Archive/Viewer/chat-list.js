// The list of chats, in the archive's order, narrowed by the filter.
class ChatList {
  constructor({ open }) {
    this.shown = CHATS;
    this.filter = "";
    this.openId = null;
    this.host = byId("chat-list");
    this.note = byId("chat-list-note");
    this.list = new Listbox(this.host, {
      row: (index) => chatRow(this.shown[index]),
      height: 72,
      picked: (index) => open(this.shown[index]),
    });
    this.list.chosen = (index) => this.shown[index].id === this.openId;
    this.list.steerFrom(byId("search"));
    this.fill();
  }

  narrow(filter) {
    const wanted = fold(filter.trim());
    if (wanted === this.filter) return;
    this.filter = wanted;
    const words = wanted.split(/\s+/);
    this.shown = wanted === "" ? CHATS : CHATS.filter((chat) => isChatNamed(chat, words) || isChatNamed(chat, [wanted]));
    this.fill();
    if (wanted === "") this.reveal();
  }

  fill() {
    this.list.fill(this.shown.length);
    show(this.shown.length === 0, this.note);
    this.note.textContent = CHATS.length === 0 ? text("noChats") : text("noChatsMatch");
  }

  // Marks the open chat and keeps it in view.
  mark(id) {
    if (id === this.openId) return;
    this.openId = id;
    this.list.remark();
    this.reveal();
  }

  reveal() {
    const index = this.shown.findIndex((chat) => chat.id === this.openId);
    if (index >= 0) this.list.activate(index);
  }
}

// Two chats of one name are told apart by their numbers.
const chatsOfName = new Map();
for (const { name } of CHATS) chatsOfName.set(name, (chatsOfName.get(name) || 0) + 1);

function tellingNumber(chat) {
  const number = chatsOfName.get(chat.name) > 1 ? numberOf(chat) : "";
  return number && element("bdi.chat-number", { dir: "ltr" }, number + " · ");
}

function chatRow(chat) {
  return element(
    "div.chat",
    {},
    avatarOf(chat),
    element(
      "span.chat-lines",
      {},
      element(
        "span.chat-top",
        {},
        chat.group ? chatMark("group") : null,
        element("span.chat-name", { dir: "auto" }, chat.name || ""),
        chat.gone === true ? chatMark("gone") : null,
        listDate(chat.lastTs),
      ),
      element("span.chat-preview", { dir: "auto" }, tellingNumber(chat), chat.preview || "\u00a0"),
    ),
  );
}

// Null for what is undated.
function listDate(seconds) {
  if (!hasTime(seconds)) return null;
  return element("time", { dateTime: dateOf(seconds).toISOString() }, formatListDate(seconds));
}

// A sign beside a chat's name; its text for those who cannot see it.
function chatMark(name) {
  const words = text(name);
  return element("span.chat-mark." + name, { role: "img", "aria-label": words, title: words }, icon(name));
}
