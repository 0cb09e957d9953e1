import assert from 'node:assert/strict';
import { test } from 'node:test';
import { many, media, plainPicture, someTime } from './Support/index.js';
import { eventually, open, openChat, texts } from './Support/viewer.js';

// What a later version may write, looking as much as it can like what this one knows.
const unknown = {
  Above: 'a tab\t, a "quote", a \\ and a\nbreak',
  info: { id: '5', text: 'not said', ts: 1, media: { kind: 'photos', exported: true, path: 'no/picture.png' } },
  ja: '{"media":{"exported":true,"kind":"photos","path":"no/picture.png"}}',
  quote: ['","ts":1', ',"text":"not said', { '"media":{': null }],
  text2: '","ts":5}',
  tone: 'not said","ts":7',
  zzz: '"\t`${1}`</script>',
};

const pictures = new Map([
  [3, media('photos', 'Ana/3.png')],
  [40, media('videos', 'Ana/40.mp4')],
  [5990, media('stickers', 'Ana/5990.png')],
]);

// 6000 messages a minute apart, of which the first two have no date.
const messages = (more) =>
  many(
    6000,
    (index) => (index === 41 ? undefined : `message ${index} "said" $1 <b> \\`),
    (index) => ({ ...more, ts: index < 2 ? undefined : someTime + index * 60, media: pictures.get(index) }),
  );

const files = { 'Ana/3.png': plainPicture, 'Ana/5990.png': plainPicture };

async function findsItsWay(chat, options) {
  const target = chat.messages[42].id;
  const page = await open([chat], {
    hash: `#chat=Long&message=${target}`,
    expect: /ERR_FILE_NOT_FOUND/,
    archive: { files, ...options },
  });
  await page.locator('.message.target').waitFor();
  assert.equal(await page.locator('.message.target').getAttribute('data-id'), target);
  assert.match((await texts(page, '.message.target .body'))[0], /^message 42 "said" \$1 <b> \\$/);

  await page.getByRole('button', { name: 'Search in this chat' }).click();
  await page.locator('#thread-query').fill('said" $1 <b> \\');
  await eventually(() => page.locator('#thread-search-status').textContent(), '1 of 5,999');
  await page.locator('#thread-query').fill('not said');
  await eventually(() => page.locator('#thread-search-status').textContent(), 'No messages found.');

  await page.goto(page.archive.url + '#mode=messages&q=message%20599');
  await eventually(() => page.locator('#search-results').getAttribute('aria-busy'), 'false');
  await eventually(() => page.locator('#search-status').textContent(), 'Results: 16');
  assert.match((await texts(page, '.hit .snippet'))[0], /^message 5999 /);
  assert.match((await texts(page, '.hit time, .hit .chat-top'))[0], /6\/5\/24/);
  await page.goto(page.archive.url + '#mode=messages&q=message%20');
  await eventually(() => page.locator('#search-status').textContent(), 'Results: 5,999');

  await page.goto('about:blank');
  await page.goto(page.archive.url);
  await openChat(page, 'Long');
  await page.locator('.picture').last().click();
  await page.getByRole('dialog').waitFor();
  assert.match(await page.locator('#lightbox-img').getAttribute('src'), /Ana\/5990\.png$/);
  assert.equal(await page.getByRole('button', { name: 'Next' }).isEnabled(), false);
  const previous = page.getByRole('button', { name: 'Previous' });
  await eventually(() => previous.isEnabled(), true);
  await previous.click();
  assert.match(await page.locator('#lightbox-img').getAttribute('src'), /Ana\/3\.png$/);
  await eventually(() => previous.isEnabled(), false);
  return page;
}

const chatFiles = (page) => page.requests.filter((url) => url.includes('chat-Long')).length;

test('Members that are not known disturb neither links nor search, dates or pictures', async () => {
  assert.equal(chatFiles(await findsItsWay({ name: 'Long', messages: messages(unknown) })), 0);
});

test('An archive whose lines have the form before opens as it did', async () => {
  assert.equal(chatFiles(await findsItsWay({ name: 'Long', messages: messages() }, { format: null })), 0);
});

test('Blocks of a format that is not known are left for the chat files', async () => {
  const page = await findsItsWay({ name: 'Long', messages: messages(unknown) }, { format: 3 });
  assert.ok(chatFiles(page) > 0);
  assert.equal(page.requests.filter((url) => url.includes('block-')).length, 0);
});
