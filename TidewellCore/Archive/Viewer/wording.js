// A text as its sender marked it: *bold*, _italic_, ~strike~, `code`, ```mono```, lines that
// quote ("> ") or list ("- ", "1. "), people mentioned, links, and where a query stands.
// Every character gets its style first, then neighbours of one style become one element:
// marks that cross each other need no care, and the work grows with the length alone.

const STYLES = { bold: 1, italic: 2, strike: 4, mono: 8, dropped: 16 };
const STYLE_OF_MARK = new Map([
  ["*", STYLES.bold],
  ["_", STYLES.italic],
  ["~", STYLES.strike],
]);
const TAGS = [
  [STYLES.mono, "code"],
  [STYLES.strike, "s"],
  [STYLES.italic, "em"],
  [STYLES.bold, "strong"],
];

const MAY_BE_MARKED = /[*_~`]|^(?:> |- |\d{1,3}\. )/m;
const LINE_START = /(> |- |\d{1,3}\. )(?=\S)/y;
const OF_A_WORD = /[\p{L}\p{N}]/u;
const MENTION = /(?<![0-9A-Za-z_])@(\d{5,20})(?![0-9A-Za-z_])/g;

// `mentions` are names by the digits that stand for them.
function richText(string, query, mentions = {}) {
  const mono = string.includes("`") ? monoIn(string) : [];
  const people = mentionsIn(string, mentions, query);
  const atoms = [...linksIn(string, mono), ...people].sort(byStart);
  const matches = rangesOf(string, query);
  if (!MAY_BE_MARKED.test(string)) return new Wording(string, null, atoms, matches).between(0, string.length);
  const styles = new Uint8Array(string.length);
  for (const range of mono) styleMono(string, styles, range);
  styleEmphasis(string, styles, atoms);
  return nodesOfLines(new Wording(string, styles, atoms, matches));
}

const byStart = (one, other) => one.start - other.start;

// The ranges {start, from, to, end} of what stands between backticks, three or, within a
// line, one.
function monoIn(string) {
  const ranges = [];
  for (let start = string.indexOf("`"); start >= 0; ) {
    const fence = string.startsWith("```", start) ? "```" : "`";
    const from = start + fence.length;
    const to = string.indexOf(fence, from);
    const inside = to < 0 ? "" : string.slice(from, to);
    const stands = inside.trim() !== "" && (fence.length === 3 || !inside.includes("\n"));
    if (stands) ranges.push({ start, from, to, end: to + fence.length });
    start = string.indexOf("`", stands ? to + fence.length : from);
  }
  return ranges;
}

// Links {start, end, href}; none reaches into mono or out of it.
function linksIn(string, mono) {
  const edges = [0, ...mono.flatMap(({ from, to }) => [from, to]), string.length];
  const links = [];
  for (let edge = 1; edge < edges.length; edge++) {
    let start = edges[edge - 1];
    for (const { string: piece, href } of cutAtLinks(string.slice(start, edges[edge]))) {
      if (href) links.push({ start, end: start + piece.length, href });
      start += piece.length;
    }
  }
  return links;
}

// Mentions {start, end, name, isMatch}.
function mentionsIn(string, mentions, query) {
  if (!isRecord(mentions) || !string.includes("@")) return [];
  return [...string.matchAll(MENTION)]
    .filter(([, digits]) => Object.hasOwn(mentions, digits) && isText(mentions[digits]))
    .map(({ 0: whole, 1: digits, index }) => {
      const name = "@" + shownFact(mentions[digits]);
      const isMatch = rangesOf(name, query).length > 0;
      return { start: index, end: index + whole.length, name, isMatch };
    });
}

function styleMono(string, styles, { start, from, to, end }) {
  styles.fill(STYLES.dropped, start, end);
  const fenced = from - start === 3;
  if (fenced && string[from] === "\n") from++;
  if (fenced && string[to - 1] === "\n" && to - 1 > from) to--;
  styles.fill(STYLES.mono, from, to);
}

// Pairs of marks within a line: the first before a word, the second behind one, as
// phones pair them; those without a partner stay what they are.
function styleEmphasis(string, styles, atoms) {
  let open = [];
  let next = 0;
  for (let at = 0; at < string.length; at++) {
    while (next < atoms.length && atoms[next].end <= at) next++;
    if (string[at] === "\n") open = [];
    const style = STYLE_OF_MARK.get(string[at]);
    const isOpaque = styles[at] & STYLES.mono || (next < atoms.length && atoms[next].start <= at);
    if (!style || isOpaque) continue;
    const opener = open.findIndex((other) => other.style === style);
    if (opener < 0 && mayOpen(string, at)) open.push({ style, at });
    else if (opener >= 0 && open[opener].at < at - 1 && mayClose(string, at)) {
      for (let inside = open[opener].at; inside <= at; inside++) styles[inside] |= style;
      styles[open[opener].at] |= STYLES.dropped;
      styles[at] |= STYLES.dropped;
      open = open.slice(0, opener);
    }
  }
}

const mayOpen = (string, at) =>
  at + 1 < string.length &&
  !/\s/.test(string[at + 1]) &&
  string[at + 1] !== string[at] &&
  (at === 0 || !OF_A_WORD.test(string[at - 1]));

const mayClose = (string, at) =>
  !/\s/.test(string[at - 1]) && (at + 1 === string.length || !OF_A_WORD.test(string[at + 1]));

// Lines that quote or list are blocks, which break lines by themselves.
function nodesOfLines(wording) {
  const nodes = [];
  let before = null;
  for (const line of wording.lines()) {
    const isBlock = Boolean(line.block);
    if (before && !before.isBlock && !(isBlock && before.length)) nodes.push("\n");
    const inside = wording.between(line.start, line.end);
    if (line.block === "quoted") nodes.push(element("span.quoted", { dir: "auto" }, ...inside));
    else if (isBlock) nodes.push(element("span.entry", { dir: "auto" }, line.sign, ...inside));
    else nodes.push(...inside);
    before = { isBlock, length: line.end - line.start };
  }
  return joinedTexts(nodes);
}

// Texts side by side become one: a message may be nothing but line breaks, more than a call takes arguments.
function joinedTexts(nodes) {
  const joined = [];
  for (const node of nodes) {
    const last = joined.length - 1;
    if (typeof node === "string" && typeof joined[last] === "string") joined[last] += node;
    else joined.push(node);
  }
  return joined;
}

// `styles` hold a number for every character, null when all are plain; `atoms`, links
// and mentions in order, stay whole; `matches` are marked.
class Wording {
  constructor(string, styles, atoms, matches) {
    Object.assign(this, { string, styles, atoms, matches, atom: 0, match: 0 });
  }

  // {start, end, block, sign}; mono may reach over lines and is not cut.
  *lines() {
    for (let start = 0; start <= this.string.length; ) {
      let end = this.string.indexOf("\n", start);
      while (end >= 0 && this.styles[end] & STYLES.mono) end = this.string.indexOf("\n", end + 1);
      if (end < 0) end = this.string.length;
      yield this.lineOf(start, end);
      start = end + 1;
    }
  }

  lineOf(start, end) {
    LINE_START.lastIndex = start;
    const [, sign] = (start < end && !this.styles[start] && LINE_START.exec(this.string)) || [];
    if (!sign || start + sign.length >= end) return { start, end };
    const block = sign === "> " ? "quoted" : "entry";
    return { start: start + sign.length, end, block, sign: sign === "- " ? "• " : sign };
  }

  // The nodes of a range; ranges are asked for in order.
  between(from, to) {
    const nodes = [];
    for (let at = from; at < to; ) {
      while (this.atom < this.atoms.length && this.atoms[this.atom].end <= at) this.atom++;
      const atom = this.atoms[this.atom];
      const isInside = atom && atom.start <= at;
      const end = Math.min(to, !atom ? to : isInside ? atom.end : atom.start);
      nodes.push(...(isInside ? this.atomBetween(atom, at, end) : this.plain(at, end)));
      at = end;
    }
    return nodes;
  }

  atomBetween(atom, from, to) {
    if (atom.href) {
      const { href } = atom;
      return [element("a", { href, target: "_blank", rel: "noopener noreferrer" }, ...this.plain(from, to))];
    }
    const made = element("bdi.mention", {}, atom.isMatch ? element("mark", {}, atom.name) : atom.name);
    return [this.dressed(this.styles ? this.styles[from] : 0, [made])];
  }

  plain(from, to) {
    if (!this.styles) return this.marked(from, to);
    const nodes = [];
    for (let at = from, end; at < to; at = end) {
      const style = this.styles[at];
      for (end = at + 1; end < to && this.styles[end] === style; ) end++;
      if (style & STYLES.dropped) continue;
      const inside = this.marked(at, end);
      if (style) nodes.push(this.dressed(style, inside));
      else nodes.push(...inside);
    }
    return nodes;
  }

  dressed(style, nodes) {
    const tags = TAGS.filter(([bit]) => style & bit);
    if (tags.length === 0) return nodes[0];
    return tags.reduce((inside, [, tag]) => [element(tag, {}, ...inside)], nodes)[0];
  }

  marked(from, to) {
    const pieces = [];
    let at = from;
    while (this.match < this.matches.length && this.matches[this.match][1] <= from) this.match++;
    for (let next = this.match; next < this.matches.length && this.matches[next][0] < to; next++) {
      const [start, end] = this.matches[next];
      if (start > at) pieces.push(this.string.slice(at, start));
      at = Math.min(to, end);
      pieces.push(element("mark", {}, this.string.slice(Math.max(from, start), at)));
    }
    if (at < to) pieces.push(this.string.slice(at, to));
    return pieces;
  }
}

// A text with names where people are mentioned, for where nothing is marked.
function withNames({ text: string = "", mentions }) {
  let named = "";
  let at = 0;
  for (const { start, end, name } of mentionsIn(string, mentions)) {
    named += string.slice(at, start) + name;
    at = end;
  }
  return named + string.slice(at);
}
