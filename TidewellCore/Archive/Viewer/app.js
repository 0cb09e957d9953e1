// Puts the parts together: one route says what is open, and everything follows it.

const chatsById = new Map(CHATS.map((chat) => [chat.id, chat]));

function chatById(id) {
  return chatsById.get(id) || null;
}

class App {
  constructor() {
    this.route = null;
    this.filter = "";
    this.field = byId("search");
    this.address = new Address();
    this.lightbox = new Lightbox({ dismissed: () => this.leavePicture() });
    this.thread = new Thread({
      showPicture: (...picture) => this.showPicture(...picture),
      rested: (place) => this.address.keep({ place }),
    });
    this.tools = new ThreadTools(this.thread);
    this.chats = new ChatList({ open: (chat) => this.go({ chat: chat.id, message: null }, { again: true }) });
    this.found = new SearchView({
      open: (chat, message, { replace } = {}) => this.go({ chat: chat.id, message }, { replace, again: true }),
      leave: () => this.go({ mode: "chats" }),
    });
    this.panel = new SearchPanel({ changed: (typed) => this.ask(typed) });
    this.wire();
    this.tellZone();
    this.arrive();
  }

  tellZone() {
    if (!TIME_ZONE) return;
    byId("zone").textContent = text("timesIn", { zone: TIME_ZONE.replaceAll("_", " ") });
    show(true, byId("zone"));
  }

  // A reload finds the place in the chat that was left.
  arrive() {
    const route = readRoute();
    const { place, picture } = this.address.state;
    const returning = Boolean(place && route.chat && place.chat === route.chat);
    if (returning) this.thread.bookmarks.set(place.chat, place.bookmark);
    if (picture) history.back();
    this.follow(route, { returning });
  }

  wire() {
    for (const mode of ["chats", "messages"]) {
      const tab = byId("mode-" + mode);
      tab.addEventListener("click", () => this.switchTo(mode));
      tab.addEventListener("keydown", (event) => this.tabKey(event));
    }
    this.field.addEventListener("input", () => this.typed());
    byId("clear-search").addEventListener("click", () => this.clearField());
    byId("back").addEventListener("click", () => this.leaveThread());
    document.addEventListener("keydown", (event) => this.keyed(event));
    window.addEventListener("popstate", () => this.returned());
    window.addEventListener("hashchange", () => this.returned());
  }

  // Changes the route; a step worth going Back from gets its own place in the history.
  // `again` shows a chat's message once more that is already open.
  go(change, { replace = false, again = false } = {}) {
    const route = { ...this.route, ...change };
    if (writeRoute(route) !== writeRoute(this.route)) {
      if (replace) this.address.replace(route);
      else this.address.push(route, { fromList: !this.route.chat });
    }
    this.follow(route, { chosen: true, again });
  }

  // By Back, Forward, or an address that was typed.
  returned() {
    this.address.drop();
    if (!this.address.state.picture) this.lightbox.close();
    this.follow(readRoute());
  }

  // Back closes the picture.
  showPicture(...picture) {
    this.lightbox.open(...picture);
    this.address.push(this.route, { ...this.address.state, picture: true });
  }

  leavePicture() {
    if (this.address.state.picture) history.back();
  }

  follow(route, { chosen = false, again = false, returning = false } = {}) {
    const before = this.route;
    if (!chosen && before && writeRoute(before) === writeRoute(route)) return;
    this.route = route;
    this.lightbox.close();
    this.showMode(route, !before || !chosen);
    const moved = !before || before.chat !== route.chat || before.message !== route.message;
    this.found.follow(route);
    this.thread.markFound(route.mode === "messages" ? this.found.marked : null);
    if (moved || again) this.showChat(returning ? { ...route, message: null } : route);
    if (before && before.chat && !route.chat) this.focusList();
    else if ((moved || again) && chosen && isNarrow() && route.chat)
      byId("messages").focus({ preventScroll: true });
  }

  showMode({ mode, query }, arrived) {
    const messages = mode === "messages";
    byId("mode-chats").setAttribute("aria-selected", !messages);
    byId("mode-messages").setAttribute("aria-selected", messages);
    byId("mode-chats").tabIndex = messages ? -1 : 0;
    byId("mode-messages").tabIndex = messages ? 0 : -1;
    show(!messages, byId("chats-panel"));
    show(messages, byId("messages-panel"));
    const label = text(messages ? "searchMessages" : "filterChats");
    this.field.placeholder = label;
    this.field.setAttribute("aria-label", label);
    this.field.setAttribute("aria-controls", messages ? "search-results" : "chat-list");
    (messages ? this.found : this.chats).list.tellActive();
    const value = messages ? query : this.filter;
    if (this.field.value.trim() !== value.trim()) this.field.value = value;
    show(this.field.value !== "", byId("clear-search"));
    if (!messages) return;
    this.found.look(query, { atOnce: arrived });
    this.panel.follow(query, this.found.query);
  }

  showChat({ chat: id, message }) {
    const chat = id && (chatById(id) || { id, name: id, count: 0, unknown: true });
    byId("app").classList.toggle("has-thread", Boolean(id));
    show(Boolean(id), byId("thread-open"));
    show(!id, byId("thread-empty"));
    this.chats.mark(id);
    document.title = (chat ? chat.name + " – " : "") + (ARCHIVE.title || text("title"));
    if (chat !== this.thread.chat) this.tools.close();
    if (chat) this.thread.open(chat, message);
    else this.thread.leave();
  }

  switchTo(mode) {
    if (mode !== this.route.mode) this.go({ mode });
    this.field.focus();
  }

  tabKey(event) {
    if (event.key !== "ArrowLeft" && event.key !== "ArrowRight") return;
    event.preventDefault();
    const mode = this.route.mode === "chats" ? "messages" : "chats";
    this.go({ mode });
    byId("mode-" + mode).focus();
  }

  typed() {
    const { value } = this.field;
    show(value !== "", byId("clear-search"));
    if (this.route.mode === "messages") this.go({ query: value.trim() }, { replace: true });
    else {
      this.filter = value;
      this.chats.narrow(value);
    }
  }

  ask(typed) {
    this.field.value = typed;
    this.typed();
  }

  clearField() {
    this.field.value = "";
    this.typed();
    this.field.focus();
  }

  // Goes back when the list is where the reader came from, so that Back and this
  // button never build up a history of their own.
  leaveThread() {
    if (!this.route.chat) return;
    if (this.address.state.fromList) history.back();
    else this.go({ chat: null, message: null });
  }

  focusList() {
    if (this.field === document.activeElement) return;
    byId(this.route.mode === "messages" ? "search-results" : "chat-list").focus({ preventScroll: true });
  }

  keyed(event) {
    if (event.defaultPrevented || event.isComposing) return;
    const command = event.ctrlKey || event.metaKey;
    if (event.key === "Escape") this.escape(event);
    else if (event.key === "F3" && !command) this.findNext(event);
    else if (command && !event.shiftKey && !event.altKey && event.key.toLowerCase() === "f")
      this.findHere(event);
  }

  escape(event) {
    if (this.lightbox.isOpen) this.lightbox.dismiss();
    else if (event.target === this.field && this.field.value) this.clearField();
    else if (this.route.chat) this.leaveThread();
    else return;
    event.preventDefault();
  }

  findNext(event) {
    const finder = [this.tools, this.found].find((one) => one.hits.length > 0);
    if (!finder || this.lightbox.isOpen) return;
    event.preventDefault();
    finder.step(event.shiftKey ? -1 : 1);
  }

  // The browser's own search sees only what exists in the page; pressed again inside
  // the field, the key is the browser's.
  findHere(event) {
    if (!this.route.chat || this.lightbox.isOpen || document.activeElement === byId("thread-query")) return;
    event.preventDefault();
    this.tools.openSearch();
  }
}

function isNarrow() {
  return window.matchMedia("(max-width: 760px)").matches;
}

// The first file without which nothing can be shown, null when they are all there and whole.
function brokenFile() {
  if (!Array.isArray(window.CHATS) || !isRecord(window.ARCHIVE)) return "data/chats.js";
  const ofStyle = getComputedStyle(document.documentElement);
  return ofStyle.getPropertyValue("--whole") === "" ? "app.css" : null;
}

// Until here the page says what to do where it cannot be put together.
function start() {
  const broken = brokenFile();
  if (broken) return window.blame(BASE + "_viewer/" + broken);
  show(false, byId("trouble"));
  show(true, byId("app"));
  new App();
}

start();
