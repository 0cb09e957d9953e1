// One message of a thread with what stands above it: its day, and in groups its sender.

const GROUPED_SECONDS = 300;

function sameRun(one, other) {
  return Boolean(
    one &&
    other &&
    one.me === other.me &&
    one.sender === other.sender &&
    isSaid(one) &&
    isSaid(other) &&
    hasTime(one.ts) === hasTime(other.ts) &&
    (!hasTime(one.ts) || other.ts - one.ts < GROUPED_SECONDS) &&
    !startsDay(other, one),
  );
}

// Whether somebody said it; what WhatsApp notes down stands in the middle.
const isSaid = (message) => Boolean(message.text || message.media) && !isNotice(message);

// Whether `message` is the first of its day, `before` being the one before it.
function startsDay(message, before) {
  if (!before) return true;
  if (!hasTime(message.ts) || !hasTime(before.ts)) return hasTime(message.ts) !== hasTime(before.ts);
  if (message.ts - before.ts >= DAY_SECONDS) return true;
  return dayNumber(message.ts) !== dayNumber(before.ts);
}

// `thread` is {chat, messages, folds, query, target, later}.
function messageItem(thread, index) {
  const message = thread.messages.at(index);
  const item = element("div.item", { role: "presentation" });
  item.index = index;
  if (!message) {
    item.classList.add("pending");
    return item;
  }
  const before = thread.messages.at(index - 1);
  const after = thread.messages.at(index + 1);
  const above = before && thread.messages.at(thread.folds.seenAt(index - 1));
  if ((index === 0 || above) && startsDay(message, above)) item.append(dayDivider(message));
  const run = thread.folds.runAt(index);
  if (run && run.first === index) item.append(foldButton(run));
  const look = { opens: !sameRun(before, message), closes: !sameRun(message, after) };
  if (isSaid(message)) item.append(bubble(thread, index, message, look));
  else if (!run || run.open) item.append(notice(thread, index, message));
  const last = run && !run.open ? run.last : index;
  if (index === 0) item.classList.add("oldest");
  if (last === thread.messages.count - 1) item.classList.add("newest");
  return item;
}

function dayDivider(message) {
  const day = hasTime(message.ts) ? formatDay(message.ts) : text("undated");
  return element("div.day", { role: "separator", "aria-label": day }, element("span", {}, day));
}

function article(selector, thread, index, message) {
  const made = element(selector, {
    "aria-posinset": index + 1,
    "aria-setsize": thread.messages.count,
    "aria-label": [message.sender, hasTime(message.ts) ? formatMoment(message.ts) : "", goneHint(message)]
      .filter(Boolean)
      .join(", "),
  });
  made.dataset.id = message.id;
  made.index = index;
  if (message.id === thread.target) made.classList.add("target");
  return made;
}

function bubble(thread, index, message, { opens, closes }) {
  const made = article("article.message", thread, index, message);
  made.classList.toggle("me", message.me);
  made.classList.toggle("opens", opens);
  made.classList.toggle("closes", closes);
  const inside = element("div.bubble");
  if (opens && thread.chat.group && !message.me && message.sender) {
    inside.append(element("div.sender.tone-" + toneOf(message.sender), { dir: "auto" }, message.sender));
  }
  inside.append(...[forwardedLine(message), quoteStrip(message)].filter(Boolean));
  const kind = kindOfMessage(message, thread.query);
  const said = kind ? kind.caption : textBelow(message);
  if (message.media) {
    inside.classList.add("with-" + kindOf(message.media).label);
    if (!said && !kind) inside.classList.add("bare");
    inside.append(markedMedia(message, thread));
  }
  if (kind) inside.append(kind.content);
  if (kind) inside.classList.add("is-" + message.kind);
  const preview = linkPreview(message, thread.query);
  if (said) inside.append(words({ ...message, text: said }, thread.query));
  else inside.append(...timeOf(message));
  if (preview) inside.append(preview);
  const reactions = reactionChips(message);
  if (reactions) made.classList.add("reacted");
  made.append(inside, ...[reactions].filter(Boolean));
  return made;
}

// The text without the name that stands on a document's card.
function textBelow(message) {
  const name = sentName(message);
  return name ? message.text.slice(name.length + 1) : message.text;
}

function markedMedia(message, thread) {
  const made = mediaOf(message, thread);
  const sign = made.matches(".media-video") ? videoSign(message) : null;
  if (sign) made.append(sign);
  if (sign) made.classList.toggle("is-round", hasMark(message, "round"));
  return made;
}

// WhatsApp's longest text, in UTF-16 units. Browsers take a minute to lay out, or fail
// on, a text of some megabytes, so of a longer one the beginning is shown.
const LONGEST_TEXT = 65536;

function shownText(string) {
  if (string.length <= LONGEST_TEXT) return string;
  return string.slice(0, wholeCharacter(string, LONGEST_TEXT)) + "…";
}

// The time follows the last line when there is room, on the side where the text ends.
function words(message, query) {
  const made = element(
    "div.text",
    { dir: "auto" },
    element("span.body", {}, ...richText(shownText(message.text), query, message.mentions)),
  );
  if (isJumbo(message)) made.classList.add("jumbo");
  made.append(...timeOf(message));
  return made;
}

function timeOf(message) {
  const told = [...signsOf(message), deletedLabel(message)].filter(Boolean);
  const hint = goneHint(message);
  if (!hasTime(message.ts)) return told.length ? [element("span.time", { title: hint }, ...told)] : [];
  const title = [formatMoment(message.ts), hint].filter(Boolean).join("\n");
  const time = element("time.time", { dir: "ltr", title }, ...told, formatTime(message.ts));
  time.dateTime = dateOf(message.ts).toISOString();
  return [time];
}

const EMOJI_ONLY =
  /^(?:\p{Extended_Pictographic}|\p{Emoji_Modifier}|\p{Regional_Indicator}|[\u200d\ufe0f\u20e3\s])+$/u;
const LETTERS = Intl.Segmenter && new Intl.Segmenter(undefined, { granularity: "grapheme" });

// One to three emoji alone are shown large.
function isJumbo({ text: words, media }) {
  if (!LETTERS || media || words.length > 40 || !EMOJI_ONLY.test(words)) return false;
  return [...LETTERS.segment(words.trim())].length <= 3;
}
