import assert from 'node:assert/strict';
import { test } from 'node:test';
import { many, message, notice, portuguese, someTime } from './Support/index.js';
import { drawn, eventually, open, openChat, texts } from './Support/viewer.js';

const day = 86400;
const fold = (page) => page.locator('button.fold');
const pills = (page) => texts(page, '.pill .body');

// `count` notices, a day apart.
const row = (count, from = 0) =>
  Array.from({ length: count }, (_, index) =>
    notice(`Member ${from + index} joined`, { ts: someTime + (from + index) * day }),
  );

test('A notice stands in the middle, as a sentence without a sender', async () => {
  const messages = [message('hi'), notice('Ana added Ben', { ts: someTime + 60 }), message('hello', { ts: someTime + 90 })];
  const page = await open([{ name: 'Club', group: true, messages }]);
  await openChat(page, 'Club');
  assert.deepEqual(await pills(page), ['Ana added Ben']);
  assert.deepEqual(await texts(page, '.bubble .body'), ['hi', 'hello']);
  assert.deepEqual(await texts(page, '.sender'), ['Ana', 'Ana']);
  const box = await page.locator('.pill').boundingBox();
  const area = await page.locator('#messages').boundingBox();
  assert.ok(Math.abs(box.x + box.width / 2 - (area.x + area.width / 2)) < 12);
  assert.match(
    await page.getByRole('article').nth(1).getAttribute('aria-label'),
    /^Saturday, June 1, 2024 at 9:01\sAM$/u,
  );
});

test('Three notices in a row are shown, four stand behind a button that says how many', async () => {
  const page = await open([
    { name: 'Three', group: true, messages: [...row(3), message('x', { ts: someTime + 3 * day })] },
    { name: 'Four', group: true, messages: [...row(4), message('x', { ts: someTime + 4 * day })] },
  ]);
  await openChat(page, 'Three');
  assert.equal((await pills(page)).length, 3);
  assert.equal(await fold(page).count(), 0);
  await openChat(page, 'Four');
  assert.deepEqual(await pills(page), []);
  assert.deepEqual(await texts(page, 'button.fold'), ['4 notices']);
  assert.equal(await page.getByRole('button', { name: '4 notices' }).getAttribute('aria-expanded'), 'false');
});

test('A click opens the folded notices, another closes them', async () => {
  const page = await open([{ name: 'Club', group: true, messages: [message('a'), ...row(6, 1), message('b', { ts: someTime + 7 * day })] }]);
  await openChat(page, 'Club');
  await fold(page).click();
  assert.equal((await pills(page)).length, 6);
  assert.equal(await fold(page).getAttribute('aria-expanded'), 'true');
  assert.deepEqual(await texts(page, 'button.fold'), ['Hide 6 notices']);
  await fold(page).click();
  assert.deepEqual(await pills(page), []);
  assert.deepEqual(await texts(page, '.bubble .body'), ['a', 'b']);
});

test('The keyboard opens and closes them and stays on the button', async () => {
  const page = await open([{ name: 'Club', group: true, messages: row(5) }]);
  await openChat(page, 'Club');
  await fold(page).focus();
  await page.keyboard.press('Enter');
  assert.equal((await pills(page)).length, 5);
  assert.ok(await fold(page).evaluate((button) => button === document.activeElement));
  await page.keyboard.press('Space');
  assert.deepEqual(await pills(page), []);
  assert.ok(await fold(page).evaluate((button) => button === document.activeElement));
});

test('Folded notices take their days with them, and the next message has its own', async () => {
  const after = [message('same day', { ts: someTime + 4 * day + 60 })];
  const page = await open([{ name: 'Club', group: true, messages: [...row(5), ...after] }]);
  await openChat(page, 'Club');
  assert.deepEqual(await texts(page, '.day'), ['Saturday, June 1, 2024', 'Wednesday, June 5, 2024']);
  await fold(page).click();
  assert.equal((await texts(page, '.day')).length, 5);
});

test('A search and a link reach a folded notice', async () => {
  const messages = [...row(30), ...many(200, undefined, (index) => ({ ts: someTime + 30 * day + index }))];
  const page = await open([{ name: 'Club', group: true, messages }], { hash: '#mode=messages&q=Member+17' });
  await page.locator('.hit').first().click();
  await page.locator('.message.target').waitFor();
  assert.deepEqual(await texts(page, '.message.target .body'), ['Member 17 joined']);
  const box = await page.locator('.message.target').boundingBox();
  const area = await page.locator('#messages').boundingBox();
  assert.ok(box.y > area.y && box.y + box.height < area.y + area.height);

  const linked = await open([{ name: 'Club', group: true, messages }], { hash: `#chat=Club&message=${messages[3].id}` });
  await linked.locator('.message.target').waitFor();
  assert.deepEqual(await texts(linked, '.message.target .body'), ['Member 3 joined']);
});

test('The search within the chat opens them and marks the words', async () => {
  const page = await open([{ name: 'Club', group: true, messages: [...row(6), message('x', { ts: someTime + 9 * day })] }]);
  await openChat(page, 'Club');
  await page.getByRole('button', { name: 'Search in this chat' }).click();
  await page.locator('#thread-query').fill('"member 2"');
  await eventually(() => texts(page, '.pill mark'), ['Member 2']);
});

test('A jump to a day among folded notices leads to their button', async () => {
  const before = many(100, undefined, (index) => ({ ts: someTime - 100 * 60 + index * 60 }));
  const after = many(100, undefined, (index) => ({ ts: someTime + 40 * day + index * 60 }));
  const page = await open([{ name: 'Club', group: true, messages: [...before, ...row(30), ...after] }]);
  await openChat(page, 'Club');
  await page.getByRole('button', { name: 'Jump to date' }).click();
  await page.locator('#thread-date-field').fill('2024-06-20');
  await page.locator('#thread-date-field').dispatchEvent('change');
  await eventually(() => fold(page).isVisible(), true);
  const area = await page.locator('#messages').boundingBox();
  assert.ok((await fold(page).boundingBox()).y - area.y < 80);
});

test('A long row of notices over many blocks makes no more elements than its button', async () => {
  const messages = [message('first'), ...Array.from({ length: 20_000 }, (_, index) => notice(`Member ${index} joined`, { ts: someTime + index })), message('last', { ts: someTime + 20_001 })];
  const page = await open([{ name: 'Club', group: true, messages }], { archive: { blockSize: 3000 } });
  await openChat(page, 'Club');
  await eventually(() => texts(page, 'button.fold'), ['20,000 notices']);
  assert.deepEqual(await texts(page, '.bubble .body'), ['first', 'last']);
  await fold(page).click();
  await drawn(page);
  assert.ok((await page.locator('.item').count()) < 150);
  await page.locator('#messages').focus();
  await page.keyboard.press('End');
  await eventually(async () => (await texts(page, '.message .body')).at(-1), 'last');
  await page.keyboard.press('Home');
  await eventually(async () => (await texts(page, '.message .body'))[1], 'Member 0 joined');
  await fold(page).click();
  assert.deepEqual(await texts(page, '.bubble .body'), ['first', 'last']);
});

test('A chat that ends in folded notices stays at its end', async () => {
  const messages = [...many(300), ...row(12, 2)];
  const page = await open([{ name: 'Club', group: true, messages }]);
  await openChat(page, 'Club');
  const area = await page.locator('#messages').boundingBox();
  const box = await fold(page).boundingBox();
  const below = area.y + area.height - (box.y + box.height);
  assert.ok(below >= 0 && below < 40, `${below} below`);
});

test('A Portuguese archive says it in Portuguese', async () => {
  const page = await open([{ name: 'Clube', group: true, messages: row(4) }], { archive: { strings: portuguese } });
  await openChat(page, 'Clube');
  assert.deepEqual(await texts(page, 'button.fold'), ['4 avisos']);
});

test('What a newer archive calls by a name not known here is shown in its words', async () => {
  const messages = [
    message('Hologram of a cat', { kind: 'hologram', info: { depth: 3 } }),
    message('x', { kind: 7, info: 'nonsense' }),
    message('a notice that is damaged', { kind: 'notice', info: null }),
    message(undefined, { kind: 'notice' }),
  ];
  const page = await open([{ name: 'Ana', messages }]);
  await openChat(page, 'Ana');
  assert.deepEqual(await texts(page, '.bubble .body'), ['Hologram of a cat', 'x']);
  assert.deepEqual(await pills(page), ['a notice that is damaged']);
  assert.deepEqual(await page.locator('.wordless').count(), 1);
});
