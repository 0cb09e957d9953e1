import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, many, media, message, mine, someTime } from './Support/index.js';
import { eventually, open, texts } from './Support/viewer.js';

// What a search may be asked.
const day = 86400;
const at = (days) => ({ ts: someTime + days * day });
const chats = [
  {
    name: 'Ana Maria Souza',
    jid: '5511900001111@s.whatsapp.net',
    messages: [
      message('The bus to the sea is late', { sender: 'Ana', ...at(0) }),
      mine('Late? the  next bus\ncomes soon', at(1)),
      message('a busy day 🎉', { sender: 'Ana', ...at(2) }),
      message('東京に行く', { sender: 'Ana', ...at(3) }),
    ],
  },
  {
    name: 'Club',
    group: true,
    messages: [
      message(undefined, { sender: 'Ben', media: media('photos', 'Club/2024-06-05_IMG_0042.jpg'), ...at(4) }),
      message('look https://example.com/late', { sender: 'Carla', ...at(5) }),
      message('Poll: Sea or hills?\n- Sea\n- Hills', { sender: 'Ben', kind: 'poll', info: { question: 'Sea or hills?', options: [{ words: 'Sea' }, { words: 'Hills' }] }, ...at(6) }),
      message('Voice', { sender: 'Ben', media: media('voiceNotes', 'Club/v.opus'), ...at(7) }),
    ],
  },
];
const [bus, next, busy, tokyo] = chats[0].messages.map(({ text }) => text);
const [link, poll] = [chats[1].messages[1].text, chats[1].messages[2].text];
const photo = '2024-06-05_IMG_0042.jpg';

async function ask(page, words) {
  await page.evaluate(() => (document.querySelector('#search-results').dataset.asked = '1'));
  await page.locator('#search').fill(words);
  await page.waitForTimeout(180);
  await eventually(() => page.locator('#search-results').getAttribute('aria-busy'), 'false');
  return texts(page, '.hit .snippet');
}

const cases = {
  'late bus': [next, bus],
  '"late bus"': [],
  '"the next bus"': [next],
  'bus': [busy, next, bus],
  '"bus"': [next, bus],
  'ben sea': [poll],
  'IMG 0042': [photo],
  '🎉': [busy],
  '京': [tokyo],
  'from:ben': ['Voice', poll, english.photo],
  'de:ben': ['Voice', poll, english.photo],
  'from:ben sea': [poll],
  'in:souza late': [next, bus],
  'em:"maria ana" late': [],
  'in:club late': [link],
  'in:+55(11)900001111 late': [next, bus],
  'before:2024-06-02 late': [bus],
  'antes:2/6/2024 late': [bus],
  'after:2024-06-02 late': [link, next],
  'after:2024-06-02 before:2024-06-03 late': [next],
  'depois:2025': [],
  'kind:photo': [english.photo],
  'tipo:foto': [english.photo],
  'kind:voice': ['Voice'],
  'tipo:áudio': ['Voice'],
  'kind:link': [link],
  'kind:poll hills': [poll],
  'kind:call': [],
  'kind:nonsense': [],
  'https://example.com/late': [link],
};

for (const [source, options] of [
  ['blocks', { blockSize: 3 }],
  ['chat files', { blockSize: 0 }],
]) {
  test(`Words in any order, in quotes, and with names before them (${source})`, async () => {
    const page = await open(chats, { hash: '#mode=messages', archive: options });
    for (const [words, expected] of Object.entries(cases)) {
      const normal = (list) => list.map((one) => one.replace(/\s+/g, ' '));
      assert.deepEqual(normal(await ask(page, words)), normal(expected), words);
    }
  });
}

test('A further letter narrows what was found, without reading anything again', async () => {
  const page = await open(chats, { hash: '#mode=messages' });
  assert.equal((await ask(page, 'l')).length, 0);
  assert.deepEqual(await ask(page, 'la'), [link, next, bus]);
  await page.evaluate(() => {
    window.parsed = 0;
    const { includes } = String.prototype;
    String.prototype.includes = function (...what) {
      if (this.length > 30) window.parsed++;
      return includes.apply(this, what);
    };
  });
  await ask(page, 'late');
  const narrowed = await page.evaluate(() => window.parsed);
  await page.evaluate(() => (window.parsed = 0));
  await ask(page, 'kind:link');
  await page.evaluate(() => (window.parsed = 0));
  await ask(page, 'ate');
  assert.ok(narrowed < (await page.evaluate(() => window.parsed)));
});

test('All words of a phrase and of a query are marked', async () => {
  const page = await open(chats, { hash: '#mode=messages' });
  await ask(page, 'late bus');
  assert.deepEqual(await texts(page, '.hit mark'), ['Late', 'bus', 'bus', 'late']);
  await ask(page, '"bus"');
  assert.deepEqual(await texts(page, '.hit mark'), ['bus', 'bus']);
});

test('Within a chat the same is understood', async () => {
  const page = await open(chats, { hash: '#chat=Ana%20Maria%20Souza' });
  await page.locator('#open-thread-search').click();
  await page.locator('#thread-query').fill('bus late from:ana');
  await eventually(() => page.locator('#thread-search-status').textContent(), '1 of 1');
  await page.locator('#thread-query').fill('京');
  await eventually(() => page.locator('#thread-search-status').textContent(), '1 of 1');
});

test('Within a chat all are counted before a number is told', async () => {
  const page = await open([{ name: 'Long', messages: many(4000) }], { hash: '#chat=Long' });
  await page.locator('.message').first().waitFor();
  await page.locator('#open-thread-search').click();
  const told = await page.evaluate(async () => {
    const said = new Set();
    const status = document.querySelector('#thread-search-status');
    new MutationObserver(() => said.add(status.textContent)).observe(status, { childList: true });
    const field = document.querySelector('#thread-query');
    field.value = 'message';
    field.dispatchEvent(new Event('input'));
    while (![...said].some((one) => one.startsWith('1 of'))) await new Promise((done) => setTimeout(done, 10));
    return [...said];
  });
  assert.deepEqual(told, [english.searching, '1 of 4,000']);
});

test('A chat is found by its number and by words in any order', async () => {
  const page = await open(chats);
  const filter = page.locator('#search');
  for (const [words, found] of [
    ['souza ana', ['Ana Maria Souza']],
    ['+55 11 90000', ['Ana Maria Souza']],
    ['90000-1111', ['Ana Maria Souza']],
    ['club', ['Club']],
    ['ana club', []],
  ]) {
    await filter.fill(words);
    await eventually(() => texts(page, '.chat-name'), found);
  }
});

test('A panel builds by click what could be typed', async () => {
  const page = await open(chats, { hash: '#mode=messages' });
  const typed = () => page.locator('#search').inputValue();
  await ask(page, 'late');
  await page.getByText(english.narrowSearch).click();
  await page.getByLabel(english.fromDate).fill('2024-06-02');
  assert.equal(await typed(), 'late after:2024-06-02');
  await eventually(() => texts(page, '.hit .snippet'), [link, next]);
  await page.getByLabel(english.kind).selectOption({ label: english.link });
  await eventually(() => texts(page, '.hit .snippet'), [link]);
  await page.getByLabel(english.fromDate).fill('');
  await page.getByLabel(english.sentBy).fill('Ana Maria');
  assert.equal(await typed(), 'late kind:link from:"Ana Maria"');
});

test('The panel shows what was typed', async () => {
  const page = await open(chats, { hash: '#mode=messages' });
  await page.getByText(english.narrowSearch).click();
  await ask(page, 'tipo:foto de:"ben" antes:2024-07-01');
  assert.equal(await page.getByLabel(english.kind).inputValue(), 'photo');
  assert.equal(await page.getByLabel(english.sentBy).inputValue(), 'ben');
  assert.equal(await page.getByLabel(english.beforeDate).inputValue(), '2024-07-01');
});
