// Notices, which WhatsApp writes itself: pills in the middle. Many of them in a row are
// folded behind one button, which stands where the first of them would.

const FOLDED_FROM = 4;

// Which notices of a chat are folded; asked for every item that comes into view, so what
// is known of a run is kept until more of the chat arrives.
class Folds {
  constructor(messages) {
    this.messages = messages;
    this.opened = new Set();
    this.forget();
  }

  forget() {
    this.runs = new Map();
  }

  // {first, last, open} of the notices around `index` when they are many, else null.
  runAt(index) {
    if (!this.messages.isNotice(index)) return null;
    if (!this.runs.has(index)) this.explore(index);
    return this.runs.get(index);
  }

  explore(index) {
    let first = index;
    let last = index;
    while (this.messages.isNotice(first - 1)) first--;
    while (this.messages.isNotice(last + 1)) last++;
    const open = [...this.opened].some((at) => at >= first && at <= last);
    const run = last - first + 1 < FOLDED_FROM ? null : { first, last, open };
    for (let at = first; at <= last; at++) this.runs.set(at, run);
  }

  // {first, last} of the messages that are out of sight around `index`, or null.
  hiddenAt(index) {
    const run = this.runAt(index);
    return run && !run.open && index > run.first ? { first: run.first + 1, last: run.last } : null;
  }

  // The message in whose place `index` is seen.
  seenAt(index) {
    const run = this.runAt(index);
    return run && !run.open ? run.first : index;
  }

  set(run, open) {
    run.open = open;
    for (let at = run.first; at <= run.last; at++) this.opened.delete(at);
    if (open) this.opened.add(run.first);
  }
}

const knownFolds = new WeakMap();

// The same chat keeps what was opened in it.
function foldsOf(messages) {
  if (!knownFolds.has(messages)) knownFolds.set(messages, new Folds(messages));
  const folds = knownFolds.get(messages);
  folds.forget();
  return folds;
}

function foldButton({ first, last, open }) {
  const words = text(open ? "hideNotices" : "showNotices", { n: last - first + 1 });
  const button = element("button.fold", { type: "button", "aria-expanded": open }, words);
  button.append(icon(open ? "up" : "down"));
  return element("div.fold-row", {}, button);
}

// Without words it is something that an older archive did not know to name.
function notice(thread, index, message) {
  const made = article("article.message.notice", thread, index, message);
  if (!isNotice(message)) {
    made.classList.add("wordless");
    made.append(element("span", {}, text("emptyMessage")), ...timeOf(message));
    return made;
  }
  const body = element("span.body", { dir: "auto" }, ...marked(split(shownText(message.text), thread.query)));
  made.append(element("div.pill", {}, body, ...timeOf(message)));
  return made;
}
