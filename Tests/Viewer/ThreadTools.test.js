import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, many, message, someTime } from './Support/index.js';
import { eventually, narrow, open, openChat, texts } from './Support/viewer.js';

const day = 86400;
const status = (page) => page.locator('#thread-search-status').textContent();
const target = (page) => page.locator('.message.target .body').textContent();

// Every 50th message holds the word.
const haystack = [
  { name: 'Long', messages: many(400, (index) => (index % 50 === 7 ? `Café ${index}` : `straw ${index}`)) },
];

async function look(page, words) {
  await page.getByRole('button', { name: english.searchInChat }).click();
  await page.locator('#thread-query').fill(words);
}

for (const [kind, options, prefix] of [
  ['a small chat', {}, 0],
  ['a large chat', { blockSize: 700 }, 5600],
]) {
  test(`Search in ${kind} shows the newest match first and goes round`, async () => {
    const messages = [
      ...many(prefix, undefined, (index) => ({ ts: someTime - (prefix - index) * 60 })),
      ...haystack[0].messages,
    ];
    const page = await open([{ name: 'Long', messages }], { archive: options });
    await openChat(page, 'Long');
    await look(page, 'cafe');
    await eventually(() => status(page), '1 of 8');
    assert.equal(await target(page), 'Café 357');
    await page.keyboard.press('Enter');
    assert.equal(await target(page), 'Café 307');
    await page.keyboard.press('ArrowDown');
    assert.equal(await target(page), 'Café 357');
    await page.getByRole('button', { name: english.next }).click();
    assert.equal(await target(page), 'Café 7');
    assert.equal(await status(page), '8 of 8');
    await page.keyboard.press('Escape');
    assert.equal(await page.locator('.body mark').count(), 0);
    assert.equal(await page.locator('#thread-open').isVisible(), true);
  });
}

for (const [kind, count] of [
  ['a small chat', 0],
  ['a large chat', 5600],
]) {
  test(`Search in ${kind} finds people mentioned by their names`, async () => {
    const asked = message('Who asks @15550000002?', { mentions: { 15550000002: 'Ben' } });
    const page = await open([{ name: 'Long', messages: [...many(count), asked] }], { archive: { blockSize: 700 } });
    await openChat(page, 'Long');
    await look(page, '@ben');
    await eventually(() => status(page), '1 of 1');
    assert.deepEqual(await texts(page, '.body mark'), ['@Ben']);
  });
}

test('Matches are marked in the thread, in links too', async () => {
  const page = await open([{ name: 'Ana', messages: [message('Bus https://example.com/bus?x=1 syllabus')] }]);
  await openChat(page, 'Ana');
  await look(page, 'bus');
  await eventually(() => texts(page, '.body mark'), ['Bus', 'bus', 'bus']);
  assert.equal(await page.locator('.body a').getAttribute('href'), 'https://example.com/bus?x=1');
});

test('What is typed while the chat still loads is looked for once it is there', async () => {
  const page = await open(haystack);
  await page.evaluate(() => {
    document.querySelector('.chat').click();
    document.getElementById('open-thread-search').click();
    const field = document.getElementById('thread-query');
    field.value = 'cafe';
    field.dispatchEvent(new InputEvent('input'));
  });
  await eventually(() => status(page), '1 of 8');
  assert.equal(await target(page), 'Café 357');
});

test('One character asks for more, and nothing found says so', async () => {
  const page = await open(haystack);
  await openChat(page, 'Long');
  await look(page, 'c');
  assert.equal(await status(page), english.searchMinChars);
  await page.locator('#thread-query').fill('zebra');
  await eventually(() => status(page), english.noMessagesFound);
  assert.equal(await page.getByRole('button', { name: english.previous }).isDisabled(), true);
});

test('The browser’s key for searching opens the search in the open chat', async () => {
  const page = await open(haystack);
  await openChat(page, 'Long');
  await page.keyboard.press('Control+f');
  assert.equal(await page.evaluate(() => document.activeElement.id), 'thread-query');
  assert.equal(await page.locator('#open-thread-search').getAttribute('aria-expanded'), 'true');
});

test('Another chat starts without the search of the one before', async () => {
  const page = await open([...haystack, { name: 'Ana', messages: [message('café')] }]);
  await openChat(page, 'Long');
  await look(page, 'cafe');
  await eventually(() => status(page), '1 of 8');
  await openChat(page, 'Ana');
  assert.equal(await page.locator('#thread-search').isVisible(), false);
  assert.equal(await page.locator('.body mark').count(), 0);
});

const daily = [
  {
    name: 'Diary',
    messages: many(
      900,
      (index) => `note ${index}`,
      (index) => ({ ts: someTime + Math.floor(index / 3) * day }),
    ),
  },
];

async function jump(page, date) {
  await page.getByRole('button', { name: english.jumpToDate }).click();
  await page.locator('#thread-date-field').fill(date);
}

const firstInView = (page) =>
  page.locator('#messages').evaluate((view) => {
    const { top } = view.getBoundingClientRect();
    return [...view.querySelectorAll('.message')]
      .find((one) => one.getBoundingClientRect().top >= top)
      .querySelector('.body').textContent;
  });

test('A jump to a date shows that day’s first message', async () => {
  const page = await open(daily);
  await openChat(page, 'Diary');
  await jump(page, '2024-09-09');
  await eventually(() => firstInView(page), 'note 300');
});

test('A jump to a day without messages shows the next one that has some, and ends at the last', async () => {
  const sparse = [
    { name: 'Diary', messages: [...daily[0].messages.slice(0, 300), ...daily[0].messages.slice(600)] },
  ];
  const page = await open(sparse);
  await openChat(page, 'Diary');
  await jump(page, '2024-10-01');
  await eventually(() => firstInView(page), 'note 600');
  await page.locator('#thread-date-field').fill('1999-01-01');
  await eventually(() => firstInView(page), 'note 0');
});

test('The date field begins at the day in view and ends at the last one', async () => {
  const page = await open(daily);
  await openChat(page, 'Diary');
  await page.locator('#messages').evaluate((view) => (view.scrollTop = 0));
  await eventually(() => firstInView(page), 'note 0');
  await page.getByRole('button', { name: english.jumpToDate }).click();
  assert.equal(await page.locator('#thread-date-field').inputValue(), '2024-06-01');
  assert.equal(await page.locator('#thread-date-field').getAttribute('max'), '2025-03-27');
});

test('A button leads back to the newest messages once they are out of view', async () => {
  const page = await open(daily, { viewport: narrow });
  await openChat(page, 'Diary');
  const newest = page.getByRole('button', { name: english.newestMessages });
  assert.equal(await newest.isVisible(), false);
  await page.locator('#messages').evaluate((view) => (view.scrollTop -= 2000));
  await newest.click();
  await page.locator('.body', { hasText: 'note 899' }).waitFor();
  assert.equal(await newest.isVisible(), false);
});
