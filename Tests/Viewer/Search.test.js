import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, many, message, mine, someTime } from './Support/index.js';
import { eventually, open, texts } from './Support/viewer.js';

const day = 86400;
const gone = /ERR_FILE_NOT_FOUND/;
const snippets = (page) => texts(page, '.snippet');

async function search(page, words) {
  if ((await page.locator('#mode-messages').getAttribute('aria-selected')) !== 'true')
    await page.locator('#mode-messages').click();
  await page.getByRole('searchbox', { name: english.searchMessages }).fill(words);
  await eventually(async () => {
    const busy = await page.locator('#search-results').getAttribute('aria-busy');
    return busy === 'true' || (await status(page)) === english.searching;
  }, false);
}
const status = (page) => page.locator('#search-status').textContent();

const chats = [
  { name: 'Ana', messages: [message('The bus is late'), mine('No BUS today', { ts: someTime + 2 * day })] },
  { name: 'Club', group: true, messages: [message('Busy? The café', { sender: 'Ben', ts: someTime + day })] },
  { name: 'Silent' },
];

test('Before anything is typed, the field says what it is for', async () => {
  const page = await open(chats);
  await page.locator('#mode-messages').click();
  assert.equal(await status(page), english.searchHint);
  assert.equal(await page.locator('#mode-messages').getAttribute('aria-selected'), 'true');
});

test('One character asks for more and searches nothing', async () => {
  const page = await open(chats);
  await search(page, ' b ');
  assert.equal(await status(page), english.searchMinChars);
  await page.waitForTimeout(300);
  assert.equal(await page.locator('.hit').count(), 0);
  assert.deepEqual(
    page.requests.filter((url) => /block-|chat-/.test(url)),
    [],
  );
});

for (const [source, options] of [
  ['blocks', { blockSize: 2 }],
  ['chat files', { blockSize: 0 }],
]) {
  test(`Matches from all chats come newest first with a count (${source})`, async () => {
    const page = await open(chats, { archive: options });
    await search(page, 'bus');
    assert.equal(await status(page), 'Results: 3');
    assert.deepEqual(await snippets(page), ['No BUS today', 'Busy? The café', 'The bus is late']);
    assert.deepEqual(await texts(page, '.hit mark'), ['BUS', 'Bus', 'bus']);
    assert.deepEqual(await texts(page, '.hit-sender'), ['You: ', 'Ben: ']);
    assert.deepEqual(await texts(page, '.hit .chat-name'), ['Ana', 'Club', 'Ana']);
  });

  test(`Nothing found says so (${source})`, async () => {
    const page = await open(chats, { archive: options });
    await search(page, 'train');
    assert.equal(await status(page), english.noMessagesFound);
  });
}

for (const [source, options] of [
  ['blocks', { blockSize: 2 }],
  ['chat files', { blockSize: 0 }],
]) {
  test(`People mentioned are found by their names (${source})`, async () => {
    const mentions = { 15550000002: 'Zoë Martin' };
    const messages = [message('Who asks @15550000002?', { mentions }), message('x@15550000002', { mentions }), message('Zoe')];
    const page = await open([{ name: 'Club', group: true, messages }], { archive: options });
    await search(page, 'zoe m');
    assert.deepEqual(await snippets(page), ['Who asks @Zoë Martin?']);
    assert.deepEqual(await texts(page, '.hit mark'), ['Zoë M']);
  });
}

test('Search finds texts and senders, never the data around them', async () => {
  const tricky = [
    message('quote ","text":"needle" and ","ts":9} end'),
    message('plain', { sender: 'needle' }),
  ];
  const page = await open([{ name: 'needle', messages: tricky }]);
  await search(page, 'needle');
  assert.deepEqual(await snippets(page), ['plain', 'quote ","text":"needle" and ","ts":9} end']);
  await search(page, '","ts":9}');
  assert.deepEqual(await snippets(page), ['quote ","text":"needle" and ","ts":9} end']);
  await search(page, 'sender');
  assert.equal(await status(page), english.noMessagesFound);
});

test('Signs that mean something to scripts are found and shown as they are', async () => {
  const text = 'a `tick` ${dollar} \\ back <tag> "quoted" \u2028 line\nbreak </script>';
  const page = await open([{ name: 'Ana', messages: [message(text)] }]);
  for (const part of ['`tick`', '${dollar}', '\\ back', '<tag>', '"quoted"', '</script>']) {
    await search(page, part);
    assert.deepEqual(await texts(page, '.hit mark'), [part === '"quoted"' ? 'quoted' : part], part);
  }
});

test('Case and accents make no difference, and the marks cover the original letters', async () => {
  const words = [
    'ESTAÇÃO',
    'Straße',
    'İstanbul',
    'ﬃcult oﬃce',
    'cafe\u0301 noir',
    '𝔘nicode ok',
    'ΟΔΟΣ',
    'مُحَمَّد',
    'ё-моё',
  ];
  const page = await open([
    { name: 'Ana', messages: words.map((word, index) => message(`👍 ${word} x`, { ts: someTime + index })) },
  ]);
  const found = async (query) => {
    await search(page, query);
    return texts(page, '.hit mark');
  };
  assert.deepEqual(await found('estacao'), ['ESTAÇÃO']);
  assert.deepEqual(await found('STRASSE'), ['Straße']);
  assert.deepEqual(await found('istanbul'), ['İstanbul']);
  assert.deepEqual(await found('office'), ['oﬃce']);
  assert.deepEqual(await found('CAFÉ'), ['cafe\u0301']);
  assert.deepEqual(await found('unicode'), ['𝔘nicode']);
  assert.deepEqual(await found('οδος'), ['ΟΔΟΣ']);
  assert.deepEqual(await found('محمد'), ['مُحَمَّد']);
  assert.deepEqual(await found('е-мое'), ['ё-моё']);
});

test('A result opens its message in its chat, marked, with the search still there', async () => {
  const long = {
    name: 'Long',
    messages: many(400, (index) => (index === 37 ? 'the needle' : `straw ${index}`)),
  };
  const page = await open([...chats, long]);
  await search(page, 'needle');
  await page.locator('.hit').click();
  const target = page.locator('.message.target');
  await target.waitFor();
  assert.equal(await target.locator('.body').textContent(), 'the needle');
  const [box, view] = [await target.boundingBox(), await page.locator('#messages').boundingBox()];
  assert.ok(box.y > view.y && box.y + box.height < view.y + view.height);
  assert.equal(await page.locator('.hit').count(), 1);
});

test('From the field, arrow keys choose a result and Enter opens it', async () => {
  const page = await open(chats);
  await search(page, 'bus');
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('Enter');
  await page.getByRole('heading', { name: 'Club' }).waitFor();
});

test('Enter in the field opens a result and nothing else', async () => {
  const page = await open(chats);
  await search(page, 'train');
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('Enter');
  assert.equal(await page.locator('#thread-empty').isVisible(), true);
  await search(page, 'busy');
  await page.keyboard.press('Enter');
  await page.getByRole('heading', { name: 'Club' }).waitFor();
  await page.goBack();
  await page.locator('#thread-empty').waitFor();
});

test('Enter in the filter opens a chat, whatever an earlier search found', async () => {
  const page = await open(chats);
  await search(page, 'busy');
  await page.locator('#mode-chats').click();
  await page.getByRole('searchbox', { name: english.filterChats }).fill('silent');
  assert.equal(await page.locator('#search').getAttribute('aria-activedescendant'), null);
  await page.keyboard.press('Enter');
  await page.getByRole('heading', { name: 'Silent' }).waitFor();
});

test('The field names an option of the list that it steers', async () => {
  const page = await open(chats);
  const active = () => page.locator('#search').getAttribute('aria-activedescendant');
  await page.locator('#search').focus();
  await page.keyboard.press('ArrowDown');
  assert.equal(await active(), 'chat-list-0');
  await page.locator('#mode-messages').click();
  assert.equal(await active(), null);
  await page.locator('#mode-chats').click();
  assert.equal(await active(), 'chat-list-0');
});

test('Typing on throws away what an earlier search still finds', async () => {
  const page = await open(
    [{ name: 'Ana', messages: many(3000, (index) => (index % 2 ? 'apple' : 'apricot')) }],
    { archive: { blockSize: 10 } },
  );
  await page.locator('#mode-messages').click();
  const field = page.locator('#search');
  await field.fill('ap');
  await page.locator('#search-results[aria-busy="true"]').waitFor();
  await field.fill('apricot');
  await eventually(() => status(page), 'Results: 1,500');
  await page.waitForTimeout(600);
  assert.equal(await status(page), 'Results: 1,500');
  assert.ok((await snippets(page)).every((snippet) => snippet === 'apricot'));
});

test('A missing block is made up for by the chat file, and nothing is found twice', async () => {
  const page = await open([{ name: 'Words', messages: many(40, (index) => `word ${index}`) }, ...chats], {
    archive: { blockSize: 10 },
    expect: gone,
  });
  page.archive.removeFile('messages/_viewer/data/block-1.js');
  await search(page, 'word');
  assert.equal(await status(page), 'Results: 40');
  assert.ok(page.requests.some((url) => url.endsWith('chat-Words.js')));
});

test('A chat that cannot be read is told, and the others’ matches stay', async () => {
  const page = await open(chats, { archive: { blockSize: 0 }, expect: gone });
  page.archive.removeFile('messages/_viewer/data/chat-Club.js');
  await search(page, 'bus');
  assert.equal(await status(page), 'Search failed. Results: 2');
});

test('A block that ends too soon or belongs to nobody does no harm', async () => {
  const page = await open(chats, { archive: { blockSize: 2 } });
  await page.evaluate(() => {
    window.ARCHIVE.blocks[0].chats[0][2] = 500;
    window.ARCHIVE.blocks[1].chats.unshift(['nobody', 0, 7]);
  });
  await search(page, 'late');
  assert.equal(await status(page), 'Results: 1');
});
