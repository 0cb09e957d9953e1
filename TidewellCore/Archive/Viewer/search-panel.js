// Builds by click what a search may be narrowed by, in the words that could be typed instead.

const KIND_CHOICES = [
  ["photo", "photo"], ["video", "video"], ["voice", "voiceNote"], ["document", "document"], ["sticker", "sticker"],
  ["link", "link"], ["place", "location"], ["contact", "contact"], ["poll", "poll"], ["call", "call"],
];

class SearchPanel {
  // `changed` is told what the field is to hold now.
  constructor({ changed }) {
    this.typed = "";
    this.inputs = ["from", "kind", "after", "before"].map((name) => [name, byId("narrow-" + name)]);
    const choices = KIND_CHOICES.map(([value, label]) => element("option", { value }, text(label)));
    byId("narrow-kind").append(...choices);
    for (const [name, input] of this.inputs) {
      input.addEventListener("input", () => changed(withFilter(this.typed, name, input.value.trim())));
    }
    byId("narrow-form").addEventListener("submit", (event) => event.preventDefault());
  }

  // Shows what was typed; the field that is being written in is left alone.
  follow(typed, { filters }) {
    this.typed = typed;
    for (const [name, input] of this.inputs) {
      const filter = filters.find((one) => one.name === name);
      if (input !== document.activeElement) input.value = filter ? fieldValue(filter) : "";
    }
  }
}

// A date only where it is one day.
function fieldValue({ name, value }) {
  if (name === "kind") return kindNamed(value);
  return name === "from" || /^\d{4}-\d\d-\d\d$/.test(value) ? value : "";
}

// `typed` with another value for a filter, or without it.
function withFilter(typed, name, value) {
  const isIt = (written) => written !== undefined && FILTER_NAMES[fold(written)] === name;
  const pieces = [...typed.matchAll(PIECES)].filter(([, written]) => !isIt(written)).map(([whole]) => whole);
  if (value) pieces.push(name + ":" + (/\s/.test(value) ? `"${value.replaceAll('"', "")}"` : value));
  return pieces.join(" ");
}
