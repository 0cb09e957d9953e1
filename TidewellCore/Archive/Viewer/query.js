// What a search asks for. Words may stand in any order; words in quotes stand together and are whole words; and some
// words with a colon narrow it: from:, in:, before:, after:, kind:, in Portuguese too.

const FILTER_NAMES = {
  from: "from", de: "from",
  in: "in", em: "in",
  before: "before", antes: "before",
  after: "after", depois: "after",
  kind: "kind", tipo: "kind",
};

const ofMedia = (kind) => ({ media }) => Boolean(media) && media.kind === kind;
const ofKind = (name) => ({ kind }) => kind === name;
const hasLink = ({ text: words, info }) => (isRecord(info) && isRecord(info.link)) || /https?:\/\/|\bwww\./i.test(words || "");

const KIND_TESTS = {
  photo: ofMedia("photos"),
  video: ofMedia("videos"),
  voice: ofMedia("voiceNotes"),
  sticker: ofMedia("stickers"),
  document: ofMedia("documents"),
  link: hasLink,
  place: ofKind("place"),
  contact: ofKind("contacts"),
  poll: ofKind("poll"),
  call: ofKind("call"),
};

// Other names of the kinds, folded.
const KIND_NAMES = {
  foto: "photo", audio: "voice", voz: "voice", figurinha: "sticker", documento: "document", lugar: "place",
  local: "place", contato: "contact", enquete: "poll", chamada: "call", ligacao: "call",
};

function kindNamed(value) {
  const name = Object.hasOwn(KIND_NAMES, value) ? KIND_NAMES[value] : value;
  return Object.hasOwn(KIND_TESTS, name) ? name : null;
}

const LETTER = /[\p{L}\p{N}]/u;
// Scripts that are written without blanks between words, and signs that say enough alone.
const ONE_IS_ENOUGH = /\p{Script=Han}|\p{Script=Hiragana}|\p{Script=Katakana}|\p{Script=Hangul}|\p{Extended_Pictographic}|\p{Regional_Indicator}/u;
// What JSON or a block's line may hold in another form.
const OTHERWISE_IN_LINES = /[@"\\`$<\s\u007f-\u009f\u2028\u2029]+/;

const ONE_BLANK = (string) => string.replace(/\s+/g, " ");

class Query {
  // `words` are {folded, whole}; `filters` are {name, value}, each with its `test`, {chat} or {message} to a boolean.
  constructor(words, filters) {
    this.words = words;
    this.filters = filters;
    this.ofChat = filters.filter(({ name }) => name === "in");
    this.ofMessage = filters.filter(({ name }) => name !== "in");
    this.hasPhrase = words.some(({ folded }) => folded.includes(" "));
    this.probes = words.map(({ folded }) => longest(folded.split(OTHERWISE_IN_LINES)));
    this.key = JSON.stringify([words, filters.map(({ name, value }) => [name, value])]);
  }

  get isEmpty() {
    return this.words.length === 0 && this.filters.length === 0;
  }

  // Whether it would find nearly everything.
  get isTooShort() {
    return this.filters.length === 0 && this.words.every(isShort);
  }

  // Whether all that it finds is found by `other` too.
  narrows(other) {
    const has = (words, { folded }) => words.some((word) => word.folded.includes(folded));
    return (
      JSON.stringify(other.filters) === JSON.stringify(this.filters) &&
      other.words.every((word) => !word.whole && has(this.words, word))
    );
  }

  takesChat(chat) {
    return this.ofChat.every(({ test }) => test(chat));
  }

  // A million lines are asked, so that most are told by a look at them as they stand.
  takesLine(line) {
    const folded = this.probes.length ? fold(line) : "";
    if (!this.probes.every((probe) => folded.includes(probe))) return false;
    return this.takes(messageOfLine(line));
  }

  takes(message) {
    if (!this.ofMessage.every(({ test }) => test(message))) return false;
    return this.words.length === 0 || this.standsIn(wordsToFind(message));
  }

  standsIn(string) {
    let folded = fold(string);
    if (this.hasPhrase) folded = ONE_BLANK(folded);
    return this.words.every((word) => startsOf(folded, word).length > 0);
  }
}

const longest = (strings) => strings.reduce((one, other) => (other.length > one.length ? other : one), "");

// All of a message that is searched: its words, its file's name, its sender.
function wordsToFind(message) {
  const { media, sender } = message;
  return [message.text ? withNames(message) : "", media && media.name, sender].filter(Boolean).join("\n");
}

// Where the word stands in a folded text; only where it ends and begins as a word when it is to be whole.
function startsOf(folded, { folded: word, whole }) {
  const starts = [];
  for (let at = folded.indexOf(word); at >= 0; at = folded.indexOf(word, at + 1)) {
    if (!whole || isWhole(folded, at, at + word.length)) return [at];
  }
  return starts;
}

// Where words are not parted by blanks, any part is a word.
function isWhole(string, start, end) {
  const joins = (one, other) => LETTER.test(one) && LETTER.test(other) && !ONE_IS_ENOUGH.test(one + other);
  const [first, last] = [String.fromCodePoint(string.codePointAt(start)), [...string.slice(start, end)].at(-1)];
  const before = [...string.slice(Math.max(0, start - 2), start)].at(-1) || "";
  const after = end < string.length ? String.fromCodePoint(string.codePointAt(end)) : "";
  return !joins(before, first) && !joins(last, after);
}

// The [start, end) ranges of `string` where any of the query's words stands, never overlapping.
function rangesOf(string, query) {
  if (!query || query.words.length === 0) return [];
  const ranges = query.words.flatMap((word) =>
    findMatches(string, word.folded)
      .filter(([start, end]) => !word.whole || isWhole(string, start, end))
      .map(([start, end]) => [start, end, isShort(word)]),
  );
  return query.words.length > 1 ? joined(string, ranges) : ranges;
}

// A word that stands nearly everywhere.
const isShort = ({ folded }) => folded.length < 2 && !ONE_IS_ENOUGH.test(folded);

// In order; words that stand side by side have one mark, and short ones beside longer ones alone.
function joined(string, ranges) {
  const marks = [];
  for (const [start, end, isOfShort] of ranges.sort(([first], [second]) => first - second)) {
    const last = marks.at(-1);
    if (last && (start <= last[1] || /^\s+$/.test(string.slice(last[1], start)))) {
      last[1] = Math.max(last[1], end);
      last[2] &&= isOfShort;
    } else marks.push([start, end, isOfShort]);
  }
  const long = marks.filter(([, , isOfShort]) => !isOfShort);
  return long.length > 0 ? long : marks;
}

// name:value, name:"a value", "words together", word
const PIECES = /([\p{L}]+):(?:"([^"]*)"?|(\S+))|["“”]([^"“”]*)["“”]?|(\S+)/gu;

function parseQuery(typed) {
  const words = [];
  const filters = [];
  for (const [whole, name, quoted, bare, together, word] of typed.trim().matchAll(PIECES)) {
    const filter = name && filterOf(fold(name), quoted ?? bare);
    if (filter) filters.push(filter);
    else addWord(words, together ?? word ?? whole, together !== undefined);
  }
  return new Query(words, filters);
}

function addWord(words, typed, whole) {
  const folded = ONE_BLANK(fold(typed).trim());
  if (folded !== "" && !words.some((word) => word.folded === folded)) words.push({ folded, whole });
}

// Null for what is no filter, as "https:", or has a value that says nothing.
function filterOf(typedName, typedValue) {
  const name = Object.hasOwn(FILTER_NAMES, typedName) ? FILTER_NAMES[typedName] : null;
  const value = ONE_BLANK(fold(typedValue || "").trim());
  const test = name && value && FILTER_TESTS[name](value);
  return test ? { name, value, test } : null;
}

const FILTER_TESTS = {
  from: (value) => (message) => fold(message.sender || "").includes(value),
  in: (value) => (chat) => isChatNamed(chat, [value]),
  before(value) {
    const start = startOfDate(value);
    return start === null ? null : ({ ts }) => hasTime(ts) && ts < start;
  },
  after(value) {
    const start = startOfDate(value);
    return start === null ? null : ({ ts }) => hasTime(ts) && ts >= start;
  },
  kind: (value) => KIND_TESTS[kindNamed(value)] || null,
};

// A chat is known by words of its name, in any order, or by digits of its number.
function isChatNamed(chat, foldedWords) {
  const name = fold(chat.name || "");
  const number = typeof chat.jid === "string" ? chat.jid.replace(/@.*/, "") : "";
  return foldedWords.every((word) => {
    const digits = word.replace(/[^\d]/g, "");
    const isNumber = digits.length >= 3 && /^[+\d().\/ -]+$/.test(word);
    return name.includes(word) || (isNumber && number.includes(digits));
  });
}

// 2024, 2024-05, 2024-05-31 or 31/5/2024 as the second in which it begins; null for anything else.
function startOfDate(value) {
  const turned = value.replace(/^(\d{1,2})[\/.](\d{1,2})[\/.](\d{4})$/, "$3-$2-$1");
  const parts = /^(\d{4})(?:-(\d{1,2}))?(?:-(\d{1,2}))?$/.exec(turned);
  if (!parts) return null;
  const [year, month, day] = [parts[1], parts[2] || "1", parts[3] || "1"].map((part) => part.padStart(2, "0"));
  const number = dayNumberOfField(`${year}-${month}-${day}`);
  return number === null ? null : startOfDay(number);
}

const SNIPPET_WHOLE = 140;
const SNIPPET_BEFORE = 36;
const SNIPPET_AFTER = 48;

// The neighbourhood of the first match as pieces {string, match}, "…" where it was cut.
function snippetOf(string, query) {
  const [first] = rangesOf(string, query);
  if (!first) return [{ string: string.slice(0, wholeCharacter(string, SNIPPET_WHOLE)), match: false }];
  const start = wholeCharacter(string, Math.max(0, first[0] - SNIPPET_BEFORE));
  const end = wholeCharacter(string, Math.min(string.length, first[1] + SNIPPET_AFTER));
  const pieces = split(string.slice(start, end), query);
  if (start > 0) pieces.unshift({ string: "…", match: false });
  if (end < string.length) pieces.push({ string: "…", match: false });
  return pieces;
}

// `string` cut into pieces {string, match}.
function split(string, query) {
  const pieces = [];
  let at = 0;
  for (const [start, end] of rangesOf(string, query)) {
    if (start > at) pieces.push({ string: string.slice(at, start), match: false });
    pieces.push({ string: string.slice(start, end), match: true });
    at = end;
  }
  if (at < string.length) pieces.push({ string: string.slice(at), match: false });
  return pieces;
}
