import assert from 'node:assert/strict';
import { test } from 'node:test';
import { many, media, message, plainPicture, someTime } from './Support/index.js';
import { drawn, eventually, open, openChat, texts } from './Support/viewer.js';

const long = [
  { name: 'Long', messages: many(6000, (index) => `message ${index} ${'words '.repeat(index % 40)}`) },
];
const view = (page) => page.locator('#messages');
const lastInPage = (page) =>
  page
    .locator('.message')
    .last()
    .evaluate((one) => one.getAttribute('aria-posinset'));

// What stands where in the view: [text, distance from the view's top] of what is seen.
const seen = (page) =>
  view(page).evaluate((element) => {
    const area = element.getBoundingClientRect();
    return [...element.querySelectorAll('.message')]
      .map((one) => [one.getAttribute('aria-posinset'), one.getBoundingClientRect()])
      .filter(([, box]) => box.bottom > area.top && box.top < area.bottom)
      .map(([number, box]) => [Number(number), Math.round(box.top - area.top)]);
  });

test('A large chat opens at its newest message from the blocks alone', async () => {
  const page = await open(long);
  await openChat(page, 'Long');
  assert.equal(await lastInPage(page), '6000');
  const box = await page.locator('.message').last().boundingBox();
  const area = await view(page).boundingBox();
  assert.ok(box.y + box.height <= area.y + area.height + 1);
  assert.equal(page.requests.filter((url) => url.includes('chat-Long')).length, 0);
  await eventually(() => page.requests.filter((url) => url.includes('block-')).length, 6);
});

test('Without its blocks a large chat opens from its chat file', async () => {
  const page = await open(long, { expect: /ERR_FILE_NOT_FOUND/ });
  page.archive.removeFile('messages/_viewer/data/block-5.js');
  await openChat(page, 'Long');
  await eventually(() => lastInPage(page), '6000');
  assert.ok(page.requests.some((url) => url.endsWith('chat-Long.js')));
});

test('An older block that is missing is made up for by the chat file', async () => {
  const page = await open(long, { expect: /ERR_FILE_NOT_FOUND/ });
  page.archive.removeFile('messages/_viewer/data/block-2.js');
  await openChat(page, 'Long');
  assert.equal(await lastInPage(page), '6000');
  await view(page).evaluate((element) => (element.scrollTop = element.scrollHeight * 0.42));
  await eventually(async () => /^message 2[0-9]{3} /.test((await texts(page, '.body'))[0]), true);
  await page.getByRole('button', { name: 'Search in this chat' }).click();
  await page.locator('#thread-query').fill('message 2100');
  await eventually(() => page.locator('#thread-search-status').textContent(), '1 of 1');
});

for (const [what, damage] of Object.entries({
  'lack its beginning': () => window.ARCHIVE.blocks.shift(),
  'hold a part twice': () => (window.ARCHIVE.blocks[0] = window.ARCHIVE.blocks[1]),
})) {
  test(`Blocks that ${what} are not trusted with a chat`, async () => {
    const page = await open(long);
    await page.evaluate(damage);
    await openChat(page, 'Long');
    assert.equal(await lastInPage(page), '6000');
    assert.ok(page.requests.some((url) => url.endsWith('chat-Long.js')));
  });
}

test('However far one scrolls, few messages exist at a time and the view is full', async () => {
  const page = await open(long);
  await openChat(page, 'Long');
  await page.evaluate(() => {
    const alive = document.getElementsByClassName('message');
    window.peak = 0;
    new MutationObserver(() => (window.peak = Math.max(window.peak, alive.length))).observe(document.body, {
      childList: true,
      subtree: true,
    });
  });
  for (const part of [0.9, 0.5, 0.1, 0, 0.3, 1]) {
    await view(page).evaluate((element, at) => (element.scrollTop = element.scrollHeight * at), part);
    await drawn(page);
    const there = await seen(page);
    assert.ok(there[0][1] <= 70, `nothing at the top at ${part}`);
    assert.deepEqual(
      there.map(([number]) => number),
      there.map((_, index) => there[0][0] + index),
    );
  }
  const peak = await page.evaluate(() => window.peak);
  assert.ok(peak > 10 && peak <= 150, `${peak} messages existed`);
});

test('Scrolling up step by step never moves what is in view by itself', async () => {
  const page = await open(long);
  await openChat(page, 'Long');
  await page.waitForTimeout(200);
  for (let step = 0; step < 25; step++) {
    const before = new Map(await seen(page));
    await view(page).evaluate((element) => (element.scrollTop -= 150));
    await drawn(page);
    if (step % 5 === 0) await page.waitForTimeout(250);
    const moved = (await seen(page))
      .filter(([number]) => before.has(number))
      .map(([number, top]) => top - before.get(number));
    assert.ok(moved.length > 0);
    assert.ok(
      moved.every((by) => Math.abs(by - 150) <= 1),
      `moved by ${moved}`,
    );
  }
});

test('A move that comes when scrolling was about to rest is not undone', async () => {
  const page = await open(long);
  await openChat(page, 'Long');
  await page.waitForTimeout(300);
  const undone = await view(page).evaluate(async (element) => {
    const pause = (time) => new Promise((resolve) => setTimeout(resolve, time));
    const moves = [];
    for (let round = 0; round < 8; round++) {
      element.scrollTop -= 200;
      await new Promise((resolve) => element.addEventListener('scroll', resolve, { once: true }));
      await pause(138);
      const item = [...element.querySelectorAll('.message')].find((one) => one.getBoundingClientRect().top > 100);
      const top = item.getBoundingClientRect().top;
      element.scrollTop -= 100;
      const until = performance.now() + 4;
      while (performance.now() < until);
      await pause(250);
      moves.push(Math.round(item.getBoundingClientRect().top - top));
    }
    return moves.filter((by) => Math.abs(by - 100) > 1);
  });
  assert.deepEqual(undone, []);
});

test('The bar’s ends are the chat’s ends', async () => {
  const page = await open(long);
  await openChat(page, 'Long');
  for (let round = 0; round < 3; round++) {
    await view(page).evaluate((element) => (element.scrollTop = 0));
    await eventually(async () => (await seen(page))[0]?.[0], 1);
    await view(page).evaluate((element) => (element.scrollTop = element.scrollHeight));
    await eventually(async () => (await seen(page)).at(-1)?.[0], 6000);
  }
});

test('Home and End go to the oldest and the newest message at once', async () => {
  const page = await open(long);
  await openChat(page, 'Long');
  await view(page).focus();
  await page.keyboard.press('Home');
  assert.equal((await seen(page))[0]?.[0], 1);
  await page.keyboard.press('End');
  assert.equal((await seen(page)).at(-1)?.[0], 6000);
});

test('Hundreds of thousands of messages stay below the heights that browsers can hold', async () => {
  const messages = many(300_000, (index) => (index % 1000 ? 'x' : 'y\n'.repeat(60)));
  const page = await open([{ name: 'Huge', messages }], { archive: { blockSize: 8000 } });
  await openChat(page, 'Huge');
  assert.ok((await view(page).evaluate((element) => element.scrollHeight)) < 17_000_000);
  await view(page).evaluate((element) => (element.scrollTop = 0));
  await eventually(async () => (await seen(page))[0]?.[0], 1);
});

test('A narrower window keeps the message that was at the top', async () => {
  const page = await open(long);
  await openChat(page, 'Long');
  await view(page).evaluate((element) => (element.scrollTop = element.scrollHeight / 2));
  await page.waitForTimeout(250);
  const [[before]] = await seen(page);
  await page.setViewportSize({ width: 900, height: 700 });
  await page.waitForTimeout(250);
  assert.equal((await seen(page))[0][0], before);
});

test('At the newest message, a lower window still shows it', async () => {
  const page = await open(long);
  await openChat(page, 'Long');
  await page.setViewportSize({ width: 1000, height: 400 });
  await eventually(async () => (await seen(page)).at(-1)?.[0], 6000);
  const area = await view(page).boundingBox();
  const last = await page.locator('.message').last().boundingBox();
  assert.ok(last.y + last.height <= area.y + area.height + 1);
});

test('A few messages stand at the bottom of the view', async () => {
  const page = await open([{ name: 'Short', messages: [message('a'), message('b')] }]);
  await openChat(page, 'Short');
  const area = await view(page).boundingBox();
  const last = await page.locator('.message').last().boundingBox();
  assert.ok(area.y + area.height - (last.y + last.height) < 40);
});

test('A link to a message deep in a large chat opens it', async () => {
  const page = await open(long, { hash: `#chat=Long&message=${long[0].messages[42].id}` });
  await page.locator('.message.target').waitFor();
  assert.match((await texts(page, '.message.target .body'))[0], /^message 42 /);
});

test('Of two messages asked for in a row, the second one is shown', async () => {
  const page = await open(long, { hash: '#mode=messages&q=000' });
  await page.locator('.hit').nth(1).waitFor();
  await eventually(() => page.locator('#search-results').getAttribute('aria-busy'), 'false');
  await page.locator('.hit').first().click();
  await eventually(() => page.locator('.message.target').count(), 1);
  const newest = await page.locator('.message.target').getAttribute('data-id');
  await page.evaluate(() => {
    const hits = document.querySelectorAll('.hit');
    hits[hits.length - 1].click();
    hits[0].click();
  });
  await page.waitForTimeout(200);
  assert.equal(await page.locator('.message.target').getAttribute('data-id'), newest);
});

test('The lightbox finds the picture before, thousands of messages away', async () => {
  const messages = many(6000, undefined, (index) =>
    index === 3 || index === 5999 ? { media: media('photos', `Ana/${index}.png`) } : {},
  );
  const page = await open([{ name: 'Long', messages }], {
    expect: /ERR_FILE_NOT_FOUND/,
    archive: { files: { 'Ana/5999.png': plainPicture } },
  });
  await openChat(page, 'Long');
  await page.locator('.picture').click();
  await page.getByRole('dialog').waitFor();
  const previous = page.getByRole('button', { name: 'Previous' });
  await eventually(() => previous.isEnabled(), true);
  await previous.click();
  assert.match(await page.locator('#lightbox-img').getAttribute('src'), /3\.png$/);
});

test('The keyboard’s focus survives when its message scrolls away', async () => {
  const messages = many(
    300,
    (index) => `https://example.com/${index}`,
    (index) => ({ ts: someTime + index }),
  );
  const page = await open([{ name: 'Links', messages }]);
  await openChat(page, 'Links');
  await page.getByRole('link').last().focus();
  await view(page).evaluate((element) => (element.scrollTop = 0));
  await eventually(() => page.evaluate(() => document.activeElement.id), 'messages');
});
