import assert from 'node:assert/strict';
import { test } from 'node:test';
import { readSource } from './Support/page.js';

const { snippetOf, findMatches, fold, parseQuery } = new Function(
  `${readSource('fold.js')} ${readSource('query.js')} return { snippetOf, findMatches, fold, parseQuery };`,
)();
const snippet = (string, query) =>
  snippetOf(string, parseQuery(query))
    .map((piece) => piece.string)
    .join('');

test('A snippet reaches 36 characters before and 48 after the match', () => {
  const string = `${'a'.repeat(100)}needle${'b'.repeat(100)}`;
  assert.equal(snippet(string, 'needle'), `…${'a'.repeat(36)}needle${'b'.repeat(48)}…`);
});

test('Where nothing is cut stands no ellipsis', () => {
  assert.equal(
    snippet(`${'a'.repeat(36)}needle${'b'.repeat(48)}`, 'NEEDLE'),
    `${'a'.repeat(36)}needle${'b'.repeat(48)}`,
  );
  assert.equal(
    snippet(`${'a'.repeat(37)}needle${'b'.repeat(48)}`, 'needle'),
    `…${'a'.repeat(36)}needle${'b'.repeat(48)}`,
  );
  assert.equal(snippet(`needle${'b'.repeat(49)}`, 'needle'), `needle${'b'.repeat(48)}…`);
});

test('Without a match the first 140 characters stand', () => {
  assert.equal(snippet('x'.repeat(200), 'needle'), 'x'.repeat(140));
  assert.equal(snippet('short', 'needle'), 'short');
});

test('A character of two units is never cut in half', () => {
  const string = `${'🎉'.repeat(40)}xneedle${'🎉'.repeat(40)}`;
  assert.ok(
    snippet(string, 'needle').isWellFormed?.() ??
      !/[\ud800-\udbff](?![\udc00-\udfff])/.test(snippet(string, 'needle')),
  );
  assert.ok(!/[\ud800-\udbff]$/.test(snippet(`x${'🎉'.repeat(100)}`, 'needle')));
});

test('Matches never overlap and lie within the text', () => {
  assert.deepEqual(findMatches('aaaa', 'aa'), [
    [0, 2],
    [2, 4],
  ]);
  assert.deepEqual(findMatches('ßß', 'ss'), [
    [0, 1],
    [1, 2],
  ]);
  assert.deepEqual(findMatches('ß', 's'), [[0, 1]]);
  assert.deepEqual(findMatches('aßb', 'sb'), [[1, 3]]);
  assert.deepEqual(findMatches('abc', ''), []);
});

test('For any text, folding letter by letter agrees with folding the whole', () => {
  const alphabet =
    'aAzZéÉe\u0301ßẞİıIiﬁﬃŉǅΣςσΏ\u0345ёЁйשָׁمُحَـ각ガｶﾞ한न\u093c\u094d👩\u200d👧❤\ufe0f𝔘𐐀\u00ad ½№'.normalize(
      'NFC',
    );
  const letters = [...alphabet];
  let seed = 7;
  const random = (below) => (seed = (seed * 48271) % 2147483647) % below;
  for (let round = 0; round < 3000; round++) {
    const string = Array.from({ length: 1 + random(8) }, () => letters[random(letters.length)]).join('');
    const whole = fold(string);
    if (whole === '') continue;
    const [range] = findMatches(string, whole);
    assert.ok(range, JSON.stringify(string));
    const inside = string.slice(...range);
    assert.equal(fold(inside), whole, JSON.stringify(string));
  }
});
