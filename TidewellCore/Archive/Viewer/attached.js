// What hangs on a message: what it answers, what people answered with an emoji, and its marks.

// What a thing is called where nothing else tells of it, and its sign.
const PARTS = {
  photo: { label: "photo", icon: "photo" },
  video: { label: "video", icon: "video" },
  gif: { label: "gif", icon: "video" },
  videoNote: { label: "videoNote", icon: "video" },
  voiceMessage: { label: "voiceMessage", icon: "voice" },
  audio: { label: "audio", icon: "voice" },
  document: { label: "document", icon: "document" },
  sticker: { label: "sticker", icon: "sticker" },
  contact: { label: "contact", icon: "person" },
  contacts: { label: "contacts", icon: "group" },
  location: { label: "location", icon: "place" },
  liveLocation: { label: "liveLocation", icon: "place" },
  poll: { label: "poll", icon: "poll" },
  product: { label: "product", icon: "product" },
  invite: { label: "invite", icon: "group" },
};

const partOf = (name) => (isText(name) && Object.hasOwn(PARTS, name) ? PARTS[name] : null);

// A strip above the text; a button when what is answered stands in this chat.
function quoteStrip(message) {
  const quote = quoteOf(message);
  if (!quote) return null;
  const part = partOf(quote.part);
  const words = quote.thing || (part ? text(part.label) : text("message"));
  const lines = element(
    "span.quote-lines",
    {},
    quote.name ? element("bdi.quote-name", {}, quote.name) : null,
    element("span.quote-words", { dir: "auto" }, part ? icon(part.icon) : null, element("bdi", {}, shownQuote(words))),
  );
  const tone = quote.name ? ".tone-" + toneOf(quote.name) : "";
  if (!quote.to) return element("div.quote" + tone, {}, lines);
  const made = element("button.quote" + tone, { type: "button", title: text("showAnswered") }, lines);
  made.dataset.to = quote.to;
  return made;
}

const LONGEST_QUOTE = 1000;

function shownQuote(string) {
  if (string.length <= LONGEST_QUOTE) return string;
  return string.slice(0, wholeCharacter(string, LONGEST_QUOTE)) + "…";
}

// Chips below the bubble; who reacted stands in their tooltips and is read out.
function reactionChips(message) {
  const reactions = reactionsOf(message);
  if (reactions.length === 0) return null;
  return element("ul.reactions", { "aria-label": text("reactions") }, ...reactions.map(reactionChip));
}

function reactionChip({ emoji, names, count }) {
  const who = names.join(", ");
  const chip = element("span.chip", { role: "img", "aria-label": [emoji, who || count].join(" "), title: who }, emoji);
  if (count > 1) chip.append(element("span.chip-count", {}, formatNumber(count)));
  return element("li", {}, chip);
}

// Above the text: that others wrote it before.
function forwardedLine(message) {
  if (!hasMark(message, "forwarded")) return null;
  return element("div.forwarded", {}, icon("forwarded"), text("forwarded"));
}

const SIGNS = [
  ["viewOnce", "once"],
  ["starred", "star"],
];

// Signs beside the time; a name for those who cannot see them.
function signsOf(message) {
  return SIGNS.filter(([mark]) => hasMark(message, mark)).map(([mark, name]) => {
    const words = text(mark);
    return element("span.sign", { role: "img", "aria-label": words, title: words }, icon(name));
  });
}

// In words, since no sign says it: the phone deleted the message after it came into the archive.
function deletedLabel(message) {
  return hasMark(message, "deletedLater") ? element("span.deleted-later", {}, text("deletedLater") + " ") : null;
}

// Years of messages may be gone, so they look like all others, and it is told only to who asks.
const goneHint = (message) => (hasMark(message, "gone") ? text("gone") : null);

// On a video: a GIF moves by itself on phones, and a round one stands in a circle there.
function videoSign(message) {
  if (hasMark(message, "gif")) return element("span.video-sign", {}, text("gif"));
  return hasMark(message, "round") ? element("span.video-sign", {}, text("videoNote")) : null;
}
