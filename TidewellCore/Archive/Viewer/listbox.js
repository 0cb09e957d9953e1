// A list of things to pick from: one tab stop, arrow keys move, Enter picks, and the
// field above it can steer it without losing the keyboard's focus.
class Listbox {
  // `row(index)` makes an option's element, `picked(index)` is told of a choice.
  constructor(host, { row, height, picked }) {
    this.host = host;
    this.row = row;
    this.picked = picked;
    this.count = 0;
    this.active = -1;
    this.chosen = () => false;
    this.scroller = new Scroller(host, { render: (index) => this.option(index), height });
    host.addEventListener("click", (event) => this.clicked(event));
    host.addEventListener("keydown", (event) => this.keyed(event, host));
  }

  // Several lists may share a field; it steers the one that its `aria-controls` names.
  steerFrom(field) {
    this.field = field;
    field.addEventListener("keydown", (event) => {
      if (this.isSteered()) this.keyed(event, field);
    });
  }

  isSteered() {
    return this.field.getAttribute("aria-controls") === this.host.id;
  }

  option(index) {
    const option = this.row(index);
    option.id = this.host.id + "-" + index;
    option.index = index;
    option.setAttribute("role", "option");
    option.setAttribute("aria-setsize", this.count);
    option.setAttribute("aria-posinset", index + 1);
    option.setAttribute("aria-selected", this.chosen(index));
    option.classList.toggle("active", index === this.active);
    return option;
  }

  // Shows `count` options from the first one on.
  fill(count) {
    this.count = count;
    this.active = -1;
    this.scroller.reset(count);
    this.tellActive();
  }

  // More options came; `indexAfter` tells where the old ones stand now.
  grow(count, indexAfter) {
    const atTop = this.scroller.position() <= 0 && this.active < 0;
    this.count = count;
    if (this.active >= 0) this.active = indexAfter(this.active);
    if (atTop) this.scroller.reset(count);
    else this.scroller.recount(count, indexAfter);
    this.tellActive();
  }

  // The choice changed; the options themselves are the same.
  remark() {
    for (const [index, option] of this.scroller.items)
      option.setAttribute("aria-selected", this.chosen(index));
  }

  activate(index) {
    if (this.count === 0) return;
    this.active = Math.min(Math.max(0, index), this.count - 1);
    this.scroller.reveal(this.active);
    for (const [at, option] of this.scroller.items) option.classList.toggle("active", at === this.active);
    this.tellActive();
  }

  tellActive() {
    const id = this.active >= 0 ? this.host.id + "-" + this.active : null;
    for (const steering of this.isSteered() ? [this.host, this.field] : [this.host]) {
      if (id) steering.setAttribute("aria-activedescendant", id);
      else steering.removeAttribute("aria-activedescendant");
    }
  }

  clicked(event) {
    const option = event.target.closest('[role="option"]');
    if (!option) return;
    this.active = option.index;
    this.activate(option.index);
    this.picked(option.index);
  }

  keyed(event, source) {
    if (event.isComposing || event.ctrlKey || event.metaKey || event.altKey) return;
    const page = Math.max(1, Math.floor(this.host.clientHeight / this.scroller.guess) - 1);
    const to = {
      ArrowDown: this.active + 1,
      ArrowUp: this.active - 1,
      PageDown: this.active + page,
      PageUp: this.active - page,
      Home: source === this.host ? 0 : undefined,
      End: source === this.host ? this.count - 1 : undefined,
    }[event.key];
    if (to !== undefined) {
      event.preventDefault();
      this.activate(to);
    } else if (event.key === "Enter" && this.count > 0) {
      event.preventDefault();
      if (this.active < 0) this.activate(0);
      this.picked(this.active);
    }
  }
}
