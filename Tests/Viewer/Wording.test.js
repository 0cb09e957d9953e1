import assert from 'node:assert/strict';
import { test } from 'node:test';
import { media, message, mine, wav } from './Support/index.js';
import { eventually, open, openChat, texts } from './Support/viewer.js';

const opened = async (messages, options) => {
  const page = await open([{ name: 'Club', group: true, messages }], options);
  await openChat(page, 'Club');
  return page;
};

// The markup that a text becomes.
const made = async (...lines) => {
  const page = await opened(lines.map((line) => message(line)));
  return page.locator('.body').evaluateAll((all) => all.map((body) => body.innerHTML));
};

test('Marks that pair become bold, italic, struck and mono', async () => {
  assert.deepEqual(await made('a *bold* b', '_italic_', '~gone~', '```mono``` and `code`', '*_both_ of* them', '(*x*), "_y_"!'), [
    'a <strong>bold</strong> b',
    '<em>italic</em>',
    '<s>gone</s>',
    '<code>mono</code> and <code>code</code>',
    '<strong><em>both</em></strong><strong> of</strong> them',
    '(<strong>x</strong>), "<em>y</em>"!',
  ]);
});

test('Marks without a partner stay as they were typed', async () => {
  const plain = ['2*3*4', 'a * b * c', 'snake_case_name', '*open', 'close*', '*a\nb*', '** **', '****', '_', '`', '```', '` `', '*bold*text', '~ x ~', 'a_b_', '*x'];
  assert.deepEqual(await made(...plain), plain);
});

test('A message of nothing but line breaks and a mark is drawn', async () => {
  const [body] = await made('*a*' + '\n'.repeat(65_530));
  assert.match(body, /^<strong>a<\/strong>\n/);
});

test('Mono protects what stands inside', async () => {
  assert.deepEqual(await made('```*a* _b_\n> c\n- d```', '`*x*`', '*a `_b_` c*'), [
    '<code>*a* _b_\n&gt; c\n- d</code>',
    '<code>*x*</code>',
    '<strong>a </strong><strong><code>_b_</code></strong><strong> c</strong>',
  ]);
});

test('Links inside of marks work and keep their own marks', async () => {
  const page = await opened([
    message('*https://example.com/a_b_c* _https://example.com/_x_/y_ `https://example.com/z` see *this https://example.com/*'),
  ]);
  const links = page.locator('.body a');
  assert.deepEqual(await links.evaluateAll((all) => all.map((link) => link.getAttribute('href'))), [
    'https://example.com/a_b_c',
    'https://example.com/_x_/y',
    'https://example.com/z',
    'https://example.com/',
  ]);
  assert.deepEqual(await texts(page, '.body a strong'), ['https://example.com/a_b_c', 'https://example.com/']);
});

test('Quoted and listed lines are blocks, and what is copied of them reads well', async () => {
  const page = await opened([message('> said before\nanswer\n- tea\n- *cake*\n1. one\n2. two\n\nend')]);
  assert.deepEqual(await texts(page, '.quoted'), ['said before']);
  assert.deepEqual(await texts(page, '.entry'), ['• tea', '• cake', '1. one', '2. two']);
  const copied = await page.locator('.body').evaluate((body) => {
    getSelection().selectAllChildren(body);
    return getSelection().toString();
  });
  assert.equal(copied, 'said before\nanswer\n• tea\n• cake\n1. one\n2. two\n\nend');
});

test('Empty lines around blocks stay', async () => {
  const page = await opened([message('a\n\n> q\n\nb'), message('a\nb\nc\nd\ne')]);
  const heights = await page.locator('.text').evaluateAll((all) => all.map((one) => one.getBoundingClientRect().height));
  assert.ok(Math.abs(heights[0] - heights[1]) < 8, `${heights}`);
});

test('What is searched for is marked across styles, and in links', async () => {
  const page = await opened([message('one *two three* four https://example.com/three')]);
  await page.getByRole('button', { name: 'Search in this chat' }).click();
  await page.locator('#thread-query').fill('three');
  await eventually(() => texts(page, '.body mark'), ['three', 'three']);
  await page.locator('#thread-query').fill('*two');
  await eventually(() => texts(page, '.body mark'), ['two']);
  await page.locator('#thread-query').fill('e *tw');
  await eventually(() => texts(page, '.body mark'), ['e ', 'tw']);
});

test('People mentioned have their names; other digits stay', async () => {
  const mentions = { 15550000002: 'Ben', 15550000003: '<b>Eve</b>', 7: 'short', 99999: 7 };
  const page = await opened([message('@15550000002 and *@15550000003*, x@15550000002 @99999 @7 @15550000002a', { mentions })]);
  assert.deepEqual(await texts(page, '.mention'), ['@Ben', '@<b>Eve</b>']);
  assert.equal(await page.locator('.body').textContent(), '@Ben and @<b>Eve</b>, x@15550000002 @99999 @7 @15550000002a');
  assert.equal(await page.locator('.body b').count(), 0);
});

test('Search results have the names too', async () => {
  const page = await open([{ name: 'Club', group: true, messages: [message('hello @15550000002', { mentions: { 15550000002: 'Ben' } })] }], {
    hash: '#mode=messages&q=hello',
  });
  await eventually(() => texts(page, '.snippet'), ['hello @Ben']);
});

test('Texts made to take long are read at once', async () => {
  const started = Date.now();
  const pieces = ['*', '_*~', '`', '```', '` ', '*a', '*a*', '> ', '> x\n', '- x\n', '*a _b ~c `d\n', '@12345 '];
  await opened(pieces.map((piece) => message(piece.repeat(64_000 / piece.length), { mentions: { 12345: 'Ben' } })));
  assert.ok(Date.now() - started < 15_000, `took ${Date.now() - started} ms`);
});

test('Marked texts keep their markup as text', async () => {
  const page = await opened([message('*<img src=x onerror="window.ran=1">* `<b>` > <i>\n> <u>')]);
  assert.equal(await page.locator('.body img, .body b, .body i, .body u').count(), 0);
  assert.equal(await page.evaluate(() => window.ran), undefined);
});

test('Forwarded, starred and view-once messages say so, also to screen readers', async () => {
  const page = await opened([
    message('a', { marks: ['forwarded', 'starred'] }),
    mine('b', { marks: ['viewOnce'], ts: undefined }),
    message('c', { marks: 'starred' }),
    message('d', { marks: ['hologram', 4] }),
  ]);
  assert.deepEqual(await texts(page, '.forwarded'), ['Forwarded']);
  assert.equal(await page.getByRole('img', { name: 'Starred' }).count(), 1);
  assert.equal(await page.getByRole('img', { name: 'View once' }).getAttribute('title'), 'View once');
  assert.equal(await page.locator('.sign').count(), 2);
});

test('A GIF says so and a round video is round', async () => {
  const files = Object.fromEntries(['a', 'b', 'c'].map((name) => [`x/${name}.mp4`, wav(1)]));
  const page = await opened(
    [
      message('a', { media: media('videos', 'x/a.mp4'), marks: ['gif'] }),
      message('b', { media: media('videos', 'x/b.mp4'), marks: ['round'] }),
      message('c', { media: media('videos', 'x/c.mp4') }),
    ],
    { archive: { files } },
  );
  assert.deepEqual(await texts(page, '.video-sign'), ['GIF', 'Video note']);
  const boxes = await page.locator('.media-video').evaluateAll((all) => all.map((one) => [one.offsetWidth === one.offsetHeight, getComputedStyle(one).borderRadius]));
  assert.deepEqual(boxes, [
    [false, '13px'],
    [true, '40px'],
    [false, '13px'],
  ]);
});
