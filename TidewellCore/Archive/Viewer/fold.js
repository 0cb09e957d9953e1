// Comparing text as people do: without regard to case, accents and typographic forms.

// Marks that people leave out when they type: combining diacritics, Arabic vowel signs
// and Hebrew points, variation selectors, joiners, soft hyphens, the Arabic tatweel.
const LEFT_OUT =
  /[\u0300-\u036f\u0483-\u0489\u0591-\u05c7\u0610-\u061a\u0640\u064b-\u065f\u0670\u06d6-\u06ed\u1ab0-\u1aff\u1dc0-\u1dff\u200b-\u200f\u2060\u20d0-\u20ff\ufe00-\ufe0f\ufe20-\ufe2f\ufeff\u00ad]+/g;
const NOT_ASCII = /[^\x00-\x7f]/;

// Normalising may put two marks of neighbouring characters into another order; such
// text is folded character by character, so that matches can be traced back.
const TWO_MARKS = /\p{Mn}\p{Mn}/u;

function fold(string) {
  if (!NOT_ASCII.test(string)) return string.toLowerCase();
  const folded = foldWhole(string);
  return TWO_MARKS.test(folded) ? Array.from(string, foldWhole).join("") : folded;
}

// Upper case first, since only that opens ß to SS and joins İ, ı and i.
function foldWhole(string) {
  return string
    .normalize("NFKD")
    .replace(LEFT_OUT, "")
    .toUpperCase()
    .toLowerCase()
    .normalize("NFKD")
    .replace(LEFT_OUT, "")
    .replaceAll("ς", "σ");
}

// For each unit of the folded text, the start of the character of `string` that it came
// from; one more entry, the length of `string`, ends the list.
function foldWithOrigins(string) {
  let folded = "";
  const origins = [];
  let at = 0;
  for (const character of string) {
    const piece = NOT_ASCII.test(character) ? foldWhole(character) : character.toLowerCase();
    for (let unit = 0; unit < piece.length; unit++) origins.push(at);
    folded += piece;
    at += character.length;
  }
  origins.push(string.length);
  return { folded, origins };
}

// The [start, end) ranges of `string` where the folded query stands, never overlapping.
// A match always covers whole characters together with the marks that follow them.
function findMatches(string, foldedQuery, limit = Infinity) {
  if (foldedQuery === "") return [];
  const plain = !NOT_ASCII.test(string);
  const { folded, origins } = plain ? { folded: string.toLowerCase() } : foldWithOrigins(string);
  const ranges = [];
  let at = folded.indexOf(foldedQuery);
  while (at >= 0 && ranges.length < limit) {
    const after = at + foldedQuery.length;
    if (plain) ranges.push([at, after]);
    else ranges.push([origins[at], endOfCharacter(folded, origins, after)]);
    at = folded.indexOf(foldedQuery, after);
  }
  return plain ? ranges : joinTouching(ranges);
}

// `after` may lie inside what one character opened into (the second s of ß).
function endOfCharacter(folded, origins, after) {
  const last = origins[after - 1];
  while (after < folded.length && origins[after] === last) after++;
  return origins[after];
}

// Two matches inside one opened character (ﬃ) would overlap in the original text.
function joinTouching(ranges) {
  const joined = [];
  for (const range of ranges) {
    const previous = joined.at(-1);
    if (previous && range[0] < previous[1]) previous[1] = Math.max(previous[1], range[1]);
    else joined.push(range);
  }
  return joined;
}

// Steps back from the middle of a surrogate pair.
function wholeCharacter(string, at) {
  const before = string.charCodeAt(at - 1);
  const after = string.charCodeAt(at);
  const inside = before >= 0xd800 && before <= 0xdbff && after >= 0xdc00 && after <= 0xdfff;
  return inside ? at - 1 : at;
}
