// Under the thread's head: search within the chat, and the jump to a date.
class ThreadTools {
  constructor(thread) {
    this.thread = thread;
    this.hits = [];
    this.field = byId("thread-query");
    this.date = byId("thread-date-field");
    this.tools = [
      { bar: byId("thread-search"), button: byId("open-thread-search"), field: this.field },
      { bar: byId("thread-date"), button: byId("open-thread-date"), field: this.date },
    ];
    for (const tool of this.tools) this.wire(tool);
    this.field.addEventListener("input", () => this.look());
    this.field.addEventListener("keydown", (event) => this.keyed(event));
    byId("older-match").addEventListener("click", () => this.step(1));
    byId("newer-match").addEventListener("click", () => this.step(-1));
    this.date.addEventListener("change", () => this.jump());
    thread.whenFilled = () => this.look();
    this.close();
  }

  wire(tool) {
    tool.button.addEventListener("click", () => (tool.bar.hidden ? this.open(tool) : this.close(tool)));
    tool.bar.addEventListener("submit", (event) => event.preventDefault());
    tool.bar.querySelector(".close-tool").addEventListener("click", () => this.close(tool));
    tool.bar.addEventListener("keydown", (event) => {
      if (event.key !== "Escape") return;
      event.stopPropagation();
      event.preventDefault();
      if (tool.field === this.field && this.field.value) this.forget();
      else this.close(tool);
    });
  }

  openSearch() {
    this.open(this.tools[0]);
  }

  open(tool) {
    this.close();
    show(true, tool.bar);
    tool.button.setAttribute("aria-expanded", "true");
    if (tool.field === this.date) this.limitDates();
    tool.field.focus();
    tool.field.select();
  }

  // Closes one tool, giving the focus back to its button, or all of them quietly.
  close(tool) {
    const focused = tool && tool.bar.contains(document.activeElement);
    for (const each of tool ? [tool] : this.tools) {
      show(false, each.bar);
      each.button.setAttribute("aria-expanded", "false");
    }
    if (focused) tool.button.focus();
    if (!tool || tool.field === this.field) this.forget();
  }

  forget() {
    this.field.value = "";
    this.look();
  }

  // Newest first, in slices; the first match is shown as soon as it is found.
  async look() {
    const query = parseQuery(this.field.value);
    const hits = [];
    this.hits = hits;
    this.current = -1;
    const { messages } = this.thread;
    const { isTooShort } = query;
    this.thread.mark(isTooShort ? null : query);
    this.tell(query.isEmpty ? "" : text(isTooShort ? "searchMinChars" : "searching"));
    if (isTooShort || !messages) return;
    await messages.ready.catch(() => {});
    let paused = performance.now();
    for (let index = messages.count - 1; index >= 0; index--) {
      if (this.hits !== hits) return;
      if (messages.matches(index, query)) {
        hits.push(index);
        if (hits.length === 1) this.showHit(0);
      }
      if (index % 500 === 0 && performance.now() - paused > SEARCH_SLICE) {
        await nextTurn();
        paused = performance.now();
      }
    }
    if (this.hits === hits) this.tellPosition(); // not before all are counted
  }

  // One match further: 1 to an older one, -1 to a newer one, round at the ends.
  step(by) {
    const count = this.hits.length;
    if (count === 0) return;
    this.showHit((this.current + by + count) % count);
    this.tellPosition();
  }

  showHit(number) {
    this.current = number;
    const index = this.hits[number];
    this.thread.goToIndex(index, this.thread.messages.at(index)?.id);
  }

  tellPosition() {
    const total = this.hits.length;
    this.tell(total ? text("resultPosition", { n: this.current + 1, total }) : text("noMessagesFound"));
  }

  tell(words) {
    byId("thread-search-status").textContent = words;
    const none = this.hits.length === 0;
    byId("older-match").disabled = none;
    byId("newer-match").disabled = none;
  }

  keyed(event) {
    if (event.isComposing) return;
    const older = event.key === "ArrowUp" || (event.key === "Enter" && !event.shiftKey);
    const newer = event.key === "ArrowDown" || (event.key === "Enter" && event.shiftKey);
    if (!older && !newer) return;
    event.preventDefault();
    this.step(older ? 1 : -1);
  }

  limitDates() {
    const { messages, scroller } = this.thread;
    if (!messages || messages.count === 0) return;
    const last = messages.at(messages.count - 1);
    const here = messages.at(scroller.anchor.index);
    this.date.max = last && hasTime(last.ts) ? dateFieldValue(last.ts) : "";
    this.date.value = here && hasTime(here.ts) ? dateFieldValue(here.ts) : this.date.max;
  }

  async jump() {
    const { messages } = this.thread;
    const day = dayNumberOfField(this.date.value);
    if (day === null || !messages || messages.count === 0) return;
    await messages.ready.catch(() => {});
    if (this.thread.messages !== messages) return;
    const index = indexOfDay(messages, day);
    this.thread.target = null;
    this.thread.scroller.scrollTo(this.thread.folds.seenAt(index), "start");
    this.thread.rested();
  }
}
