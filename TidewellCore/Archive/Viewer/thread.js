// The open chat: its head, and its messages, of which only those in view exist.
class Thread {
  // `rested` is told the place, {chat, bookmark}, that a reader has come to.
  constructor({ showPicture, rested }) {
    this.view = byId("messages");
    this.note = byId("thread-note");
    this.chat = null;
    this.messages = null;
    this.query = null;
    this.foundQuery = null;
    this.target = null;
    this.waitingMedia = [];
    this.folds = null;
    this.whenRested = rested;
    this.bookmarks = new Map();
    this.whenFilled = () => {};
    this.scroller = new Scroller(this.view, {
      render: (index, far) => messageItem(this.context(far), index),
      height: 64,
      endAligned: true,
      onScroll: () => this.scrolled(),
      hidden: (index) => this.folds.hiddenAt(index),
    });
    this.view.addEventListener("click", (event) => this.clicked(event, showPicture));
    this.view.addEventListener("keydown", (event) => this.keyed(event));
    byId("newest").addEventListener("click", () => this.toNewest());
  }

  context(far) {
    const { chat, messages, folds, target } = this;
    const query = this.query || this.foundQuery;
    return { chat, messages, folds, query, target, later: far ? this.waitingMedia : null };
  }

  // Shows a chat, at one message if asked for, else where it was left or at its newest.
  async open(chat, messageId) {
    if (this.chat !== chat) this.begin(chat);
    else if (!this.messages) return (this.pendingTarget = messageId);
    else return messageId ? this.goTo(messageId) : undefined;
    this.pendingTarget = messageId;
    if (chat.unknown) return this.fail();
    let messages;
    try {
      messages = await openMessages(chat);
    } catch {
      if (this.chat === chat) this.fail();
      return;
    }
    if (this.chat !== chat || this.messages) return;
    this.fill(messages);
    if (this.pendingTarget) await this.goTo(this.pendingTarget);
  }

  begin(chat) {
    this.leave();
    this.chat = chat;
    byId("thread-avatar").replaceChildren(avatarOf(chat));
    byId("thread-title").textContent = chat.name || "";
    byId("thread-sub").textContent = chat.unknown ? "" : aboutChat(chat);
    show(chat.gone === true, byId("thread-gone"));
    this.view.setAttribute("aria-label", chat.name || text("messages"));
    this.view.setAttribute("aria-busy", "true");
    this.slow = setTimeout(() => this.say(text("loading")), 200);
  }

  leave() {
    clearTimeout(this.slow);
    clearTimeout(this.resting);
    if (this.chat && this.messages) this.bookmarks.set(this.chat.id, this.place());
    if (this.messages) this.messages.whenArrived = () => {};
    this.chat = null;
    this.messages = null;
    this.query = null;
    this.target = null;
    this.pendingTarget = null;
    this.waitingMedia = [];
    this.scroller.reset(0);
    this.say("");
    show(false, byId("newest"), byId("floating-day"));
  }

  place() {
    return this.scroller.atEnd() ? null : this.scroller.bookmark();
  }

  fill(messages) {
    clearTimeout(this.slow);
    this.messages = messages;
    this.folds = foldsOf(messages);
    messages.whenArrived = (from, to) => this.arrived(from, to);
    this.view.setAttribute("aria-busy", "false");
    this.say(messages.count === 0 ? text("noMessages") : "");
    const left = this.bookmarks.get(this.chat.id);
    this.scroller.reset(messages.count, { atEnd: true });
    if (left && left.index < messages.count && !this.pendingTarget) this.scroller.restore(left);
    this.rested();
    this.whenFilled();
  }

  // Notices that arrive may belong to a row that is in view.
  arrived(from, to) {
    const { messages } = this;
    const joins = messages.isNotice(from) || messages.isNotice(to - 1);
    this.folds.forget();
    if (joins) this.scroller.refresh();
    else this.scroller.refresh(from - 1, to + 1);
  }

  fail() {
    clearTimeout(this.slow);
    this.view.setAttribute("aria-busy", "false");
    const { chat, pendingTarget } = this;
    this.chat = null;
    const words = [
      element("strong", {}, text("couldNotOpen")),
      element("span", {}, text("couldNotLoad") + ": " + (chat.name || chat.id)),
    ];
    this.say(...words, ...(chat.unknown ? [] : this.waysOut(chat, pendingTarget)));
  }

  waysOut(chat, target) {
    const again = element("button.try-again", { type: "button" }, text("tryAgain"));
    again.addEventListener("click", () => this.open(chat, target));
    const transcript = { href: addressOf((chat.folder || "") + "/_transcript.html") };
    return [again, chat.folder ? element("a", transcript, text("openTranscript")) : null];
  }

  say(...words) {
    this.note.replaceChildren(...words.filter(Boolean));
    show(this.note.hasChildNodes(), this.note);
  }

  // Finding an older message takes longer; only the last one asked for is shown.
  async goTo(messageId) {
    const { messages } = this;
    this.pendingTarget = messageId;
    const index = await messages.indexOfId(messageId).catch(() => -1);
    const wanted = this.messages === messages && this.pendingTarget === messageId;
    if (wanted && index >= 0) this.goToIndex(index, messageId);
  }

  goToIndex(index, messageId = null) {
    this.target = messageId;
    const run = this.folds.runAt(index);
    if (run && !run.open) this.unfold(run);
    this.scroller.scrollTo(index, "center");
    this.scroller.refresh();
    this.rested();
  }

  mark(query) {
    if (this.query?.key === query?.key) return;
    this.query = query;
    this.scroller.refresh();
  }

  // What the search over all chats looks for, marked where the chat's own search marks nothing.
  markFound(query) {
    if (this.foundQuery?.key === query?.key) return;
    this.foundQuery = query;
    this.scroller.refresh();
  }

  toNewest() {
    this.scroller.scrollTo(this.messages.count - 1, "end");
    this.rested();
    this.view.focus({ preventScroll: true });
  }

  // At once, where browsers would glide through a hundred thousand messages.
  keyed(event) {
    const plain = !event.ctrlKey && !event.metaKey && !event.altKey && !event.shiftKey;
    if (!plain || event.target !== this.view || !this.messages || this.messages.count === 0) return;
    if (event.key === "Home") this.scroller.scrollTo(0, "start");
    else if (event.key === "End") this.scroller.scrollTo(this.messages.count - 1, "end");
    else return;
    event.preventDefault();
    this.rested();
  }

  scrolled() {
    this.showDay();
    this.showNewest();
    clearTimeout(this.resting);
    this.resting = setTimeout(() => this.rested(), 180);
  }

  rested() {
    const waiting = this.waitingMedia;
    this.waitingMedia = [];
    for (const load of waiting) load();
    playersRest(this.view);
    this.showNewest();
    byId("floating-day").classList.remove("shown");
    if (this.messages) this.whenRested({ chat: this.chat.id, bookmark: this.place() });
  }

  showNewest() {
    show(!this.scroller.atEnd(this.view.clientHeight / 2), byId("newest"));
  }

  // The day at the top of the view, while scrolling.
  showDay() {
    const message = this.messages && this.messages.at(this.scroller.anchor.index);
    const floating = byId("floating-day");
    if (!message) return;
    const day = hasTime(message.ts) ? formatDay(message.ts) : text("undated");
    if (floating.firstChild.textContent !== day) floating.firstChild.textContent = day;
    show(true, floating);
    floating.classList.add("shown");
  }

  unfold(run) {
    this.folds.set(run, true);
    this.scroller.unhide({ first: run.first + 1, last: run.last });
  }

  toggle(run) {
    if (!run.open) this.unfold(run);
    else {
      this.folds.set(run, false);
      this.scroller.refresh();
    }
    const item = this.scroller.items.get(run.first);
    if (item) item.querySelector(".fold").focus({ preventScroll: true });
    this.rested();
  }

  clicked(event, showPicture) {
    const button = event.target.closest("button");
    if (!button) return;
    if (button.matches(".picture")) showPicture(this.messages, button.closest(".message").index, button);
    else if (button.matches(".quote")) this.goTo(button.dataset.to);
    else if (button.matches(".fold")) this.toggle(this.folds.runAt(button.closest(".item").index));
  }
}

// How much there is of it, and of a person the number, where that is not the name already.
function aboutChat(chat) {
  if (chat.group) return countText("groupCountOne", "groupCount", chat.count);
  return [numberOf(chat), countText("messageCountOne", "messageCount", chat.count)].filter(Boolean).join(" · ");
}
