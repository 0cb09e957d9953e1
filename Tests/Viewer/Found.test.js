import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, many, message, someTime } from './Support/index.js';
import { eventually, narrow, open, openChat, texts } from './Support/viewer.js';

// A hit of the search over all chats, once it is opened.
const chats = [
  { name: 'Ana', messages: many(400, (index) => (index % 100 === 50 ? `the Bus ${index}` : `message ${index}`)) },
  { name: 'Ben', messages: [message('no bus', { ts: someTime + 1e6 })] },
];
const newestFirst = ['no bus', 'the Bus 350', 'the Bus 250', 'the Bus 150', 'the Bus 50'];
const target = (page) => page.locator('.message.target .body').textContent();
const marks = (page) => texts(page, '.message mark');
const selected = (page) => texts(page, '.hit[aria-selected="true"] .snippet, [aria-selected="true"] .hit .snippet');
const place = (page) => page.locator('#found-status').textContent();

async function openHit(page, number) {
  await page.locator('#mode-messages').click();
  await page.locator('#search').fill('bus');
  await eventually(() => page.locator('.hit').count(), 5);
  await page.locator('.hit').nth(number).click();
  await eventually(() => target(page), newestFirst[number]);
}

test('The words are marked in the thread, and the row stays selected', async () => {
  const page = await open(chats);
  await openHit(page, 1);
  await eventually(() => marks(page), ['Bus']);
  assert.deepEqual(await selected(page), ['the Bus 350']);
  assert.equal(await place(page), '2 of 5');
  const outline = await page.locator('.message.target .bubble').evaluate((one) => getComputedStyle(one).outlineStyle);
  assert.equal(outline, 'solid');
});

test('They are marked in forced colours too', async () => {
  const page = await open(chats, { forcedColors: 'active' });
  await openHit(page, 1);
  const looks = await page.locator('.message mark').evaluate((one) => {
    const [own, around] = [one, one.parentElement].map((element) => getComputedStyle(element).backgroundColor);
    return own !== around;
  });
  assert.equal(looks, true);
});

test('F3 and Shift+F3 lead through all hits, round at the ends, over chats', async () => {
  const page = await open(chats);
  await openHit(page, 3);
  for (const words of [newestFirst[4], newestFirst[0], newestFirst[1]]) {
    await page.keyboard.press('F3');
    await eventually(() => target(page), words);
    await eventually(() => selected(page), [words]);
  }
  await page.keyboard.press('Shift+F3');
  await eventually(() => target(page), newestFirst[0]);
});

test('Buttons do so too, where the thread lies over the list', async () => {
  const page = await open(chats, { viewport: narrow });
  await openHit(page, 1);
  await page.locator('#next-hit').click();
  await eventually(() => target(page), newestFirst[2]);
  assert.equal(await place(page), '3 of 5');
  await page.locator('#previous-hit').click();
  await eventually(() => target(page), newestFirst[1]);
});

test('Stepping through the hits leaves one step to go Back to', async () => {
  const page = await open(chats);
  await openHit(page, 1);
  for (let times = 0; times < 3; times++) await page.keyboard.press('F3');
  await page.waitForTimeout(600);
  await page.goBack();
  await page.getByText(english.selectChat).waitFor();
  assert.equal(await page.locator('#search').inputValue(), 'bus');
});

test('Leaving the search takes the marks away, and keeps the chat', async () => {
  const page = await open(chats);
  await openHit(page, 1);
  await page.locator('#leave-search').click();
  await eventually(() => marks(page), []);
  assert.equal(await page.locator('#thread-title').textContent(), 'Ana');
  assert.equal(await page.locator('#found-bar').isVisible(), false);
});

test('An address with words and a message marks both', async () => {
  const page = await open(chats, { hash: `#mode=messages&q=bus&chat=Ana&message=${chats[0].messages[150].id}` });
  await eventually(() => target(page), 'the Bus 150');
  await eventually(() => marks(page), ['Bus']);
  await eventually(() => selected(page), ['the Bus 150']);
  await eventually(() => place(page), '4 of 5');
});

test('Within a chat its own search comes first', async () => {
  const page = await open(chats);
  await openHit(page, 1);
  await page.locator('#open-thread-search').click();
  await page.locator('#thread-query').fill('message 39');
  await eventually(() => target(page), 'message 399');
  assert.equal(await page.locator('#found-bar').isVisible(), false);
  await page.keyboard.press('F3');
  await eventually(() => target(page), 'message 398');
});

test('A chat that is opened from the list has no marks', async () => {
  const page = await open(chats);
  await openHit(page, 1);
  await page.locator('#mode-chats').click();
  await openChat(page, 'Ben');
  assert.deepEqual(await marks(page), []);
});
