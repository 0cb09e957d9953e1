// What hangs on a message and what it is beside text and file, made safe: the data may be
// damaged, so what is of another type than it should be counts as absent, lists end
// somewhere, and numbers are numbers that can be meant.

const LONGEST_LIST = 1000;

const isText = (value) => typeof value === "string" && value !== "";
const listOf = (value, wanted) =>
  (Array.isArray(value) ? value : []).filter(wanted).slice(0, LONGEST_LIST);
const textsIn = (value) => listOf(value, isText);
const recordsIn = (value) => listOf(value, isRecord);

const infoOf = (message) => (isRecord(message.info) ? message.info : {});

// Null when the message answers nothing.
function quoteOf(message) {
  if (!isRecord(message.quote)) return null;
  const quote = withTexts({ ...message.quote }, "name", "part", "thing", "to");
  return { ...quote, me: quote.me === true };
}

// [{emoji, names}]; an emoji is a few characters at most.
const LONGEST_EMOJI = 32;

function reactionsOf(message) {
  return recordsIn(message.reactions)
    .filter(({ emoji }) => isText(emoji) && emoji.length <= LONGEST_EMOJI)
    .map(({ emoji, names, count }) => {
      const known = textsIn(names);
      return { emoji, names: known, count: Math.max(known.length, Number.isSafeInteger(count) ? count : 0) };
    });
}

const hasMark = (message, mark) => Array.isArray(message.marks) && message.marks.includes(mark);

function placeIn(info) {
  const { lat, lon } = info;
  const known = typeof lat === "number" && typeof lon === "number";
  const isOnEarth = known && Math.abs(lat) <= 90 && Math.abs(lon) <= 180;
  return isOnEarth ? { lat, lon } : null;
}
