// One picture over everything, with the chat's other pictures on either side.
class Lightbox {
  // `dismissed` is told when the reader closes it.
  constructor({ dismissed }) {
    this.dismissed = dismissed;
    this.box = byId("lightbox");
    this.picture = byId("lightbox-img");
    this.note = byId("lightbox-note");
    this.previous = byId("lightbox-previous");
    this.next = byId("lightbox-next");
    byId("lightbox-close").addEventListener("click", () => this.dismiss());
    this.previous.addEventListener("click", () => this.step(-1));
    this.next.addEventListener("click", () => this.step(1));
    this.picture.addEventListener("load", () => this.box.classList.add("loaded"));
    this.picture.addEventListener("error", () => this.failed());
    this.box.addEventListener("click", (event) => this.clicked(event));
    this.box.addEventListener("keydown", (event) => this.keyed(event));
    this.swipes();
  }

  get isOpen() {
    return !this.box.hidden;
  }

  open(messages, index, opener) {
    this.messages = messages;
    this.opener = opener;
    show(true, this.box);
    byId("app").inert = true;
    this.showAt(index);
    byId("lightbox-close").focus();
  }

  dismiss() {
    this.close();
    this.dismissed();
  }

  close() {
    if (!this.isOpen) return;
    show(false, this.box);
    byId("app").inert = false;
    this.picture.removeAttribute("src");
    const back = this.opener.isConnected ? this.opener : byId("messages");
    back.focus({ preventScroll: true });
    this.messages = null;
    this.opener = null;
  }

  showAt(index) {
    this.index = index;
    const message = this.messages.at(index);
    const { media } = message;
    this.box.classList.remove("loaded");
    this.kind = kindOf(media);
    show(false, this.note);
    show(true, this.picture);
    this.picture.alt = text(this.kind.label) + (message.text ? ": " + shownText(message.text) : "");
    this.picture.src = addressOf(media.path);
    byId("lightbox-sender").textContent = message.sender || "";
    byId("lightbox-time").textContent = hasTime(message.ts) ? formatMoment(message.ts) : "";
    byId("lightbox-text").replaceChildren(...richText(shownText(message.text || ""), "", message.mentions));
    byId("lightbox-file").href = addressOf(media.path);
    this.findNeighbours();
  }

  failed() {
    if (!this.isOpen) return;
    show(false, this.picture);
    this.note.textContent = text(this.kind.missing);
    show(true, this.note);
  }

  // Older blocks of a large chat may still be under way.
  async findNeighbours() {
    const { messages, index } = this;
    this.before = this.pictureFrom(index, -1);
    this.after = this.pictureFrom(index, 1);
    this.showNeighbours();
    await messages.ready.catch(() => {});
    if (this.messages !== messages || this.index !== index || this.before >= 0) return;
    this.before = this.pictureFrom(index, -1);
    this.showNeighbours();
  }

  pictureFrom(index, by) {
    for (let at = index + by; at >= 0 && at < this.messages.count; at += by) {
      if (this.messages.isPicture(at)) return at;
    }
    return -1;
  }

  showNeighbours() {
    this.ahead = [this.before, this.after].map((index) => this.preload(index));
    const focused = document.activeElement;
    this.previous.disabled = this.before < 0;
    this.next.disabled = this.after < 0;
    if (focused && focused.disabled) byId("lightbox-close").focus();
  }

  // The neighbours are there before they are asked for.
  preload(index) {
    const { media } = (index >= 0 && this.messages.at(index)) || {};
    if (!media || missingPaths.has(media.path)) return null;
    const picture = new Image();
    picture.addEventListener("error", () => missingPaths.add(media.path));
    picture.src = addressOf(media.path);
    return picture;
  }

  step(by) {
    const to = by < 0 ? this.before : this.after;
    if (to >= 0) this.showAt(to);
  }

  clicked(event) {
    if (event.target === this.box || event.target.classList.contains("lightbox-stage")) this.dismiss();
  }

  keyed(event) {
    const moves = { ArrowLeft: -1, ArrowRight: 1, ArrowUp: -1, ArrowDown: 1, PageUp: -1, PageDown: 1 };
    if (event.key in moves) {
      event.preventDefault();
      this.step(moves[event.key]);
    } else if (event.key === "Tab") this.keepFocus(event);
  }

  keepFocus(event) {
    const stops = [...this.box.querySelectorAll("button:not(:disabled), a[href]")];
    const at = stops.indexOf(document.activeElement);
    const to = (at + (event.shiftKey ? -1 : 1) + stops.length) % stops.length;
    event.preventDefault();
    stops[to].focus();
  }

  // A finger's stroke to the side turns the page, one down or up closes.
  swipes() {
    let start = null;
    this.box.addEventListener("pointerdown", (event) => {
      start = event.isPrimary && event.pointerType !== "mouse" ? event : null;
    });
    this.box.addEventListener("pointercancel", () => (start = null));
    this.box.addEventListener("pointerup", (event) => {
      if (!start || event.pointerId !== start.pointerId) return;
      const across = event.clientX - start.clientX;
      const down = event.clientY - start.clientY;
      start = null;
      if (Math.abs(across) > 48 && Math.abs(across) > Math.abs(down)) this.step(across < 0 ? 1 : -1);
      else if (Math.abs(down) > 96) this.dismiss();
    });
  }
}
