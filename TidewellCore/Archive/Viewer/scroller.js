// A list of any length in a scrolling element, of which only what is in view exists.
//
// What stays put while scrolling is an anchor: an item and where its top stands below
// the top of the view. Items are placed around it, measured once and remembered, so a
// wrong guess about items never seen moves nothing that is. The scroll bar follows when
// scrolling rests. Browsers cap the height of an element (about 17.8 million pixels in
// Firefox), so the bar of a longer list is scaled: short moves go pixel by pixel, long
// ones in proportion. While the view is hidden nothing can be measured, so nothing is
// placed until it shows again.

const TALLEST = 10_000_000;
const OVERSCAN = 800;
const REST = 140;

class Scroller {
  // `render(index, far)` makes an item's element, `far` while the list flies past;
  // `height` is a guess. A list that is `endAligned` stands at the bottom of the view
  // when it is short, and stays at its end when the view changes its size. `hidden(index)`
  // gives {first, last} of the items around it that take no room, or null.
  constructor(view, { render, height, endAligned = false, onScroll = () => {}, hidden = () => null }) {
    this.view = view;
    this.render = render;
    this.hidden = hidden;
    this.guess = height;
    this.endAligned = endAligned;
    this.onScroll = onScroll;
    this.items = new Map();
    this.window = element("div.window", { role: "presentation" });
    this.runway = element("div.runway", { role: "presentation" }, this.window);
    view.append(this.runway);
    view.addEventListener("scroll", () => this.scrolled(), { passive: true });
    this.following = false;
    this.lastBar = 0;
    new ResizeObserver(() => this.resized()).observe(view);
    this.reset(0);
  }

  // Starts over with `count` items, at the first one or, with `atEnd`, at the last.
  reset(count, { atEnd = false } = {}) {
    this.clear();
    this.count = count;
    this.heights = new Heights(count, this.guess);
    this.anchor = { index: 0, top: 0 };
    this.viewHeight = this.view.clientHeight;
    this.width = this.view.clientWidth;
    if (count === 0) this.setRunway(0);
    else if (atEnd) this.scrollTo(count - 1, "end");
    else this.scrollTo(0, "start");
  }

  clear() {
    for (const item of this.items.values()) item.remove();
    this.items.clear();
  }

  // Shows other items under the same indexes (new ones, or the old ones changed).
  refresh(from = 0, to = this.count) {
    for (const [index, item] of this.items) {
      if (index < from || index >= to) continue;
      this.release(item);
      this.items.delete(index);
    }
    this.place();
  }

  // Keeps the view on the same items `indexAfter(index)` being where an item stands now.
  recount(count, indexAfter = (index) => index) {
    const anchor = { index: indexAfter(this.anchor.index), top: this.anchor.top };
    this.clear();
    this.count = count;
    this.heights = new Heights(count, this.guess);
    if (count === 0) {
      this.setRunway(0);
      return;
    }
    this.anchor = { index: Math.min(anchor.index, count - 1), top: anchor.top };
    this.place();
    this.settle();
  }

  // Its height is known only once it exists, hence twice.
  scrollTo(index, where = "center") {
    if (this.count === 0) return;
    if (this.view.clientHeight === 0) {
      this.anchor = { index, top: 0 };
      return;
    }
    for (let round = 0; round < 2; round++) {
      const room = this.viewHeight - this.heights.values[index];
      const top = { start: 0, center: Math.max(0, room / 2), end: room }[where];
      this.anchor = { index, top };
      this.arrange();
    }
    this.place();
    this.settle();
  }

  // The least movement that brings an item into view.
  reveal(index) {
    if (this.count === 0) return;
    const top = this.heights.offset(index) - this.position();
    if (top < 0) this.scrollTo(index, "start");
    else if (top + this.heights.values[index] > this.viewHeight) this.scrollTo(index, "end");
    else this.place();
  }

  // What to give to `restore` to see the same again.
  bookmark() {
    return { ...this.anchor };
  }

  restore(anchor) {
    this.anchor = { ...anchor };
    this.place();
    this.settle();
  }

  // The top of the view in the list's own coordinates, 0 to `furthest`.
  position() {
    return this.heights.offset(this.anchor.index) - this.anchor.top;
  }

  furthest() {
    return Math.max(0, this.heights.total - this.viewHeight);
  }

  atEnd(margin = 2) {
    return this.count === 0 || this.position() >= this.furthest() - margin;
  }

  moveTo(position) {
    const clamped = Math.min(Math.max(0, position), this.furthest());
    const index = this.heights.indexAt(clamped);
    this.anchor = { index, top: this.heights.offset(index) - clamped };
  }

  barHeight() {
    return Math.min(this.heights.total, TALLEST);
  }

  barRange() {
    return Math.max(0, this.barHeight() - this.viewHeight);
  }

  scrolled() {
    if (this.count === 0) return;
    const bar = this.view.scrollTop;
    const moved = bar - this.lastBar;
    if (moved === 0) return;
    this.lastBar = bar;
    const far = Math.abs(moved) > 3 * this.viewHeight;
    const range = this.runwayHeight - this.viewHeight;
    if (far && range > 0) this.moveTo((bar / range) * this.furthest());
    else this.moveTo(this.position() + moved);
    this.place(far);
    this.keepEnds(range);
    clearTimeout(this.resting);
    this.resting = setTimeout(() => this.rest(), REST);
    this.onScroll(far);
    if (!this.following) this.follow();
  }

  // The events of a smooth scroll come one frame late; while one is under way, every
  // frame looks for itself.
  follow() {
    this.following = true;
    requestAnimationFrame(() => {
      this.following = false;
      this.scrolled();
    });
  }

  // The bar may have moved again without its event having come yet.
  rest() {
    if (this.view.scrollTop !== this.lastBar) this.scrolled();
    else this.settle();
  }

  // The bar must not run out before the list does, nor the list before the bar.
  keepEnds(range) {
    const position = this.position();
    const barAtStart = this.lastBar <= 0;
    const barAtEnd = this.lastBar >= range - 1;
    if (barAtStart !== position <= 0 || barAtEnd !== position >= this.furthest() - 1) this.settle();
  }

  // Brings the bar to where it belongs without moving what is seen.
  settle() {
    clearTimeout(this.resting);
    if (this.count === 0 || this.view.clientHeight === 0) return;
    const furthest = this.furthest();
    this.setRunway(this.barHeight());
    const bar = furthest > 0 ? (this.position() / furthest) * this.barRange() : 0;
    if (Math.abs(bar - this.view.scrollTop) > 0.5) this.view.scrollTop = bar;
    this.lastBar = this.view.scrollTop;
    this.put();
  }

  setRunway(height) {
    if (this.runwayHeight === height) return;
    this.runwayHeight = height;
    this.runway.style.height = height + "px";
  }

  // Makes the items around the anchor exist and stand at their places, and takes the
  // topmost one in view for the new anchor.
  place(far = false) {
    if (this.count === 0 || this.view.clientHeight === 0) return;
    this.arrange(far);
    this.moveTo(this.position());
    this.put();
  }

  // Measuring may show that more items are needed, or that the list ends sooner.
  arrange(far = false) {
    for (let round = 0; round < 8; round++) {
      const hid = this.fill(this.rangeInView(), far);
      if (this.measure() || hid) continue;
      const position = this.position();
      if (position >= 0 && position <= this.furthest()) break;
      this.moveTo(position);
    }
  }

  rangeInView() {
    const position = this.position();
    return {
      first: this.heights.indexAt(position - OVERSCAN),
      last: this.heights.indexAt(position + this.viewHeight + OVERSCAN),
    };
  }

  // Whether items were hidden that took room until now.
  fill({ first, last }, far) {
    for (const [index, item] of this.items) {
      if (index >= first && index <= last) continue;
      this.release(item);
      this.items.delete(index);
    }
    let next = null;
    let hid = false;
    for (let index = last; index >= first; index--) {
      const hidden = this.hidden(index);
      if (hidden) {
        hid = this.resize(hidden, 0) || hid;
        index = hidden.first;
        continue;
      }
      let item = this.items.get(index);
      if (!item) {
        item = this.render(index, far);
        this.items.set(index, item);
        this.window.insertBefore(item, next);
        item.measured = false;
      }
      next = item;
    }
    this.first = first;
    return hid;
  }

  // Whether any of these items had another height.
  resize({ first, last }, height) {
    let changed = false;
    for (let index = first; index <= last; index++) {
      if (this.heights.values[index] === height) continue;
      this.heights.set(index, height);
      changed = true;
    }
    return changed;
  }

  // Items that took no room take a guess again, and are shown.
  unhide(items) {
    this.resize(items, this.guess);
    this.refresh();
  }

  // An item that leaves takes the keyboard's focus with it unless the list takes it.
  release(item) {
    const focused = item.contains(document.activeElement);
    item.remove();
    if (focused) this.view.focus({ preventScroll: true });
  }

  // Whether any height differed from what was known.
  measure() {
    let changed = false;
    for (const [index, item] of this.items) {
      if (item.measured) continue;
      item.measured = true;
      const height = item.getBoundingClientRect().height;
      if (height === this.heights.values[index]) continue;
      this.heights.set(index, height);
      changed = true;
    }
    return changed;
  }

  put() {
    const above = this.heights.offset(this.first) - this.position();
    const slack = this.endAligned ? Math.max(0, this.viewHeight - this.heights.total) : 0;
    this.window.style.top = this.lastBar + above + slack + "px";
  }

  resized() {
    const { clientWidth, clientHeight } = this.view;
    if (clientWidth === this.width && clientHeight === this.viewHeight) return;
    const wasAtEnd = this.atEnd();
    const rewrapped = clientWidth !== this.width;
    this.width = clientWidth;
    this.viewHeight = clientHeight;
    if (clientHeight === 0 || this.count === 0) return;
    if (rewrapped) for (const item of this.items.values()) item.measured = false;
    if (wasAtEnd && this.endAligned) this.scrollTo(this.count - 1, "end");
    else {
      this.place();
      this.settle();
    }
  }
}
