import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, many, media, message, png, someTime } from './Support/index.js';
import { eventually, narrow, open, openChat } from './Support/viewer.js';

const colours = [
  [200, 60, 60],
  [60, 160, 60],
  [60, 60, 200],
];
const files = Object.fromEntries(
  colours.map((colour, index) => [`Ana/${index}.png`, png(60, 40, () => colour)]),
);

// Pictures with other messages between them, the second one with a caption.
const messages = [0, 1, 2].flatMap((index) => [
  message(`words ${index}`, { ts: someTime + index * 1000 }),
  message(index === 1 ? 'the sea' : undefined, {
    ts: someTime + index * 1000 + 60,
    media: media('photos', `Ana/${index}.png`),
  }),
]);

async function openPicture(number, options = {}) {
  const page = await open([{ name: 'Ana', messages }], { archive: { files }, ...options });
  await openChat(page, 'Ana');
  const picture = page.locator('.picture').nth(number);
  await picture.focus();
  await page.keyboard.press('Enter');
  return page;
}

const shown = (page) => page.locator('#lightbox-img').getAttribute('src');
const focused = (page) => page.evaluate(() => document.activeElement.id || document.activeElement.className);

test('A picture opens over everything, with who sent it, when, and its caption', async () => {
  const page = await openPicture(1);
  await page.getByRole('dialog').waitFor();
  assert.equal(await shown(page), 'messages/Ana/1.png');
  assert.equal(await page.locator('#lightbox-sender').textContent(), 'Ana');
  assert.match(await page.locator('#lightbox-time').textContent(), /June 1, 2024/);
  assert.equal(await page.locator('#lightbox-text').textContent(), 'the sea');
  assert.equal(await page.locator('#lightbox-img').getAttribute('alt'), 'Photo: the sea');
  await eventually(() => page.locator('#lightbox-img').evaluate((img) => img.naturalWidth), 60);
});

test('Next and previous go from picture to picture and stop at the ends', async () => {
  const page = await openPicture(0);
  const previous = page.getByRole('button', { name: english.previous });
  const next = page.getByRole('button', { name: english.next });
  assert.equal(await previous.isDisabled(), true);
  await next.click();
  assert.equal(await shown(page), 'messages/Ana/1.png');
  await page.keyboard.press('ArrowRight');
  assert.equal(await shown(page), 'messages/Ana/2.png');
  assert.equal(await next.isDisabled(), true);
  await page.keyboard.press('ArrowRight');
  assert.equal(await shown(page), 'messages/Ana/2.png');
  await page.keyboard.press('ArrowLeft');
  await previous.click();
  assert.equal(await shown(page), 'messages/Ana/0.png');
});

test('Escape closes the picture, the next Escape the thread', async () => {
  const page = await openPicture(1);
  await page.keyboard.press('Escape');
  assert.equal(await page.getByRole('dialog').isVisible(), false);
  assert.equal(await focused(page), 'picture');
  assert.equal(
    await page
      .locator('.picture')
      .nth(1)
      .evaluate((one) => one === document.activeElement),
    true,
  );
  assert.equal(await page.locator('#thread-open').isVisible(), true);
  await page.keyboard.press('Escape');
  await page.getByText(english.selectChat).waitFor();
});

test('The keyboard stays inside while a picture is open', async () => {
  const page = await openPicture(1);
  assert.equal(await focused(page), 'lightbox-close');
  const seen = new Set();
  for (let press = 0; press < 9; press++) {
    await page.keyboard.press('Tab');
    seen.add(await focused(page));
  }
  await page.keyboard.press('Shift+Tab');
  seen.add(await focused(page));
  assert.deepEqual([...seen].sort(), [
    'lightbox-close',
    'lightbox-file',
    'lightbox-next',
    'lightbox-previous',
  ]);
  assert.equal(await page.locator('#app').evaluate((app) => app.inert), true);
});

test('A click beside the picture closes it, one on it does not', async () => {
  const page = await openPicture(1);
  await page.locator('#lightbox-img').click();
  assert.equal(await page.getByRole('dialog').isVisible(), true);
  await page.mouse.click(640, 120);
  assert.equal(await page.getByRole('dialog').isVisible(), false);
});

test('Going Back closes the picture with the chat', async () => {
  const page = await openPicture(1);
  await page.goBack();
  assert.equal(await page.getByRole('dialog').isVisible(), false);
  assert.equal(await page.locator('#app').evaluate((app) => app.inert), false);
});

test('A finger’s stroke turns the page', async () => {
  const page = await openPicture(1, { viewport: narrow, hasTouch: true, isMobile: true });
  const stroke = (from, to) =>
    page.locator('#lightbox').evaluate(
      (box, [start, end]) => {
        const finger = { pointerId: 5, pointerType: 'touch', isPrimary: true, bubbles: true, clientY: 300 };
        box.dispatchEvent(new PointerEvent('pointerdown', { ...finger, clientX: start }));
        box.dispatchEvent(new PointerEvent('pointerup', { ...finger, clientX: end }));
      },
      [from, to],
    );
  await stroke(300, 120);
  assert.equal(await shown(page), 'messages/Ana/2.png');
  await stroke(100, 290);
  assert.equal(await shown(page), 'messages/Ana/1.png');
  await stroke(200, 215);
  assert.equal(await shown(page), 'messages/Ana/1.png');
});

test('A missing picture says so, and the others stay within reach', async () => {
  const lost = message(undefined, { ts: someTime - 90000, media: media('photos', 'Ana/lost.png') });
  const between = many(200, undefined, (index) => ({ ts: someTime - 80000 + index }));
  const page = await open([{ name: 'Ana', messages: [lost, ...between, ...messages] }], {
    archive: { files },
    expect: /ERR_FILE_NOT_FOUND/,
  });
  await openChat(page, 'Ana');
  await page.locator('.picture').first().click();
  await page.keyboard.press('ArrowLeft');
  const note = page.locator('#lightbox-note');
  await eventually(() => note.textContent(), english.missingImage);
  assert.equal(await note.isVisible(), true);
  await page.keyboard.press('ArrowRight');
  assert.equal(await shown(page), 'messages/Ana/0.png');
  assert.equal(await note.isVisible(), false);
});
