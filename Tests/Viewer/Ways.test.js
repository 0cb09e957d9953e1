import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, many, media, message, png } from './Support/index.js';
import { eventually, open, openChat } from './Support/viewer.js';

// How a reader gets about: Back, Escape, a reload, and the address that tells of it all.
const files = { 'Ana/0.png': png(60, 40, () => [200, 60, 60]) };
const people = [
  { name: 'Ana', messages: [message('look'), message(undefined, { media: media('photos', 'Ana/0.png') })] },
  { name: 'Long', messages: many(500) },
];
const picture = (page) => page.getByRole('dialog');
const title = (page) => page.locator('#thread-title').textContent();
const addressOf = (page) => decodeURIComponent(new URL(page.url()).hash);
const topmost = (page) =>
  page.evaluate(() => {
    const top = document.querySelector('#messages').getBoundingClientRect().top;
    return [...document.querySelectorAll('.message')].find((one) => one.getBoundingClientRect().top >= top)?.textContent;
  });

async function openPicture(page) {
  await openChat(page, 'Ana');
  await page.locator('.picture').click();
  await picture(page).waitFor();
}

async function scrollTo(page, share) {
  await page.locator('#messages').evaluate((view, part) => (view.scrollTop = view.scrollHeight * part), share);
  await page.waitForTimeout(800);
}

test('Back closes the picture, then the chat', async () => {
  const page = await open(people, { archive: { files } });
  await openPicture(page);
  await page.goBack();
  await picture(page).waitFor({ state: 'hidden' });
  assert.equal(await title(page), 'Ana');
  await page.goBack();
  await page.getByText(english.selectChat).waitFor();
});

test('A picture that was closed leaves no step to go Back to', async () => {
  for (const close of [(page) => page.keyboard.press('Escape'), (page) => page.locator('#lightbox-close').click()]) {
    const page = await open(people, { archive: { files } });
    await openPicture(page);
    await close(page);
    await picture(page).waitFor({ state: 'hidden' });
    await page.waitForTimeout(100);
    await page.goBack();
    await page.getByText(english.selectChat).waitFor();
  }
});

test('A reload while a picture is open shows the chat, and Back leaves it', async () => {
  const page = await open(people, { archive: { files } });
  await openPicture(page);
  await page.reload();
  await page.locator('.picture').waitFor();
  await page.waitForTimeout(200);
  assert.equal(await picture(page).isVisible(), false);
  await page.goBack();
  await page.getByText(english.selectChat).waitFor();
});

test('A reload finds the place in the chat', async () => {
  const page = await open(people);
  await openChat(page, 'Long');
  await scrollTo(page, 0.4);
  const before = await topmost(page);
  await page.reload();
  await page.locator('.message').first().waitFor();
  await eventually(() => topmost(page), before);
  assert.notEqual(before, undefined);
});

test('A reload finds the place that was read after a message was linked to', async () => {
  const page = await open(people, { hash: `#chat=Long&message=${people[1].messages[100].id}` });
  await page.locator('.message.target').waitFor();
  await scrollTo(page, 0.8);
  const before = await topmost(page);
  await page.reload();
  await page.locator('.message').first().waitFor();
  await eventually(() => topmost(page), before);
});

test('Escape clears a search field before it closes anything', async () => {
  const page = await open(people, { hash: '#chat=Long' });
  const filter = page.getByRole('searchbox', { name: english.filterChats });
  await filter.fill('lo');
  await filter.press('Escape');
  assert.equal(await filter.inputValue(), '');
  assert.equal(await title(page), 'Long');
  await page.locator('#open-thread-search').click();
  const inChat = page.locator('#thread-query');
  await inChat.fill('message 7');
  await inChat.press('Escape');
  assert.equal(await inChat.inputValue(), '');
  assert.equal(await inChat.isVisible(), true);
  await inChat.press('Escape');
  assert.equal(await inChat.isVisible(), false);
  assert.equal(await title(page), 'Long');
});

test('Three hundred keystrokes write the address a few times, the last one rightly', async () => {
  const page = await open(people, { hash: '#mode=messages' });
  await page.evaluate(() => {
    window.written = 0;
    const write = history.replaceState.bind(history);
    history.replaceState = (...state) => (window.written++, write(...state));
  });
  const field = page.locator('#search');
  await field.focus();
  for (let stroke = 0; stroke < 300; stroke++) await page.keyboard.type('ab'[stroke % 2]);
  await eventually(() => addressOf(page), `#mode=messages&q=${'ab'.repeat(150)}`);
  assert.ok((await page.evaluate(() => window.written)) < 30);
});

test('Words that were typed are in the address when a hit is opened at once', async () => {
  const page = await open(people, { hash: '#mode=messages' });
  await page.locator('#search').fill('message 77');
  await page.locator('.hit').first().click();
  await page.goBack();
  await eventually(() => addressOf(page), '#mode=messages&q=message+77');
});

test('All works where the history may not be written', async () => {
  const page = await open(people, { archive: { files } });
  await page.evaluate(() => {
    history.pushState = history.replaceState = () => {
      throw new DOMException('The operation is insecure.', 'SecurityError');
    };
  });
  await openPicture(page);
  await page.keyboard.press('Escape');
  await picture(page).waitFor({ state: 'hidden' });
  await page.keyboard.press('Escape');
  await page.getByText(english.selectChat).waitFor();
  await page.locator('#mode-messages').click();
  await page.locator('#search').fill('message 77');
  await page.locator('.hit').first().click();
  await page.locator('.message.target').waitFor();
});
