import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, many, message, portuguese, someTime } from './Support/index.js';
import { eventually, open, openChat, texts } from './Support/viewer.js';

const gone = /ERR_FILE_NOT_FOUND/;
const people = ['Ana', 'Ben', 'Cleo'].map((name) => ({
  name,
  messages: many(30, (index) => `${name} ${index}`),
}));
const loads = (page, name) => page.requests.filter((url) => url.endsWith(name)).length;
const title = (page) => page.locator('#thread-title').textContent();

test('A chat’s file is loaded when it is opened, once, and leaves nothing behind', async () => {
  const page = await open(people);
  assert.equal(page.requests.filter((url) => url.includes('chat-')).length, 0);
  await openChat(page, 'Ana');
  await openChat(page, 'Ben');
  await openChat(page, 'Ana');
  assert.equal(loads(page, 'chat-Ana.js'), 1);
  assert.equal(await page.evaluate(() => window.__CHAT_PAYLOAD), null);
  assert.equal(await page.locator('script[src*="chat-"]').count(), 0);
});

test('Opening the same chat twice quickly issues one load', async () => {
  const page = await open(people);
  await page.evaluate(() => {
    const row = document.querySelector('.chat');
    row.click();
    row.click();
  });
  await page.locator('.message').first().waitFor();
  assert.equal(loads(page, 'chat-Ana.js'), 1);
});

test('Switching quickly between chats ends with the last one alone', async () => {
  const page = await open(people);
  await page.evaluate(() => {
    for (let round = 0; round < 10; round++)
      for (const row of document.querySelectorAll('.chat')) row.click();
  });
  await page.locator('.message').first().waitFor();
  await page.waitForTimeout(100);
  assert.equal(await title(page), 'Cleo');
  assert.ok((await texts(page, '.body')).every((body) => body.startsWith('Cleo')));
  assert.equal(loads(page, 'chat-Ana.js'), 1);
});

test('Going Back while a chat loads leaves the list, not the chat', async () => {
  const page = await open(people);
  await page.evaluate(() => {
    document.querySelector('.chat').click();
    history.back();
  });
  await page.locator('#thread-empty').waitFor();
  await page.waitForTimeout(100);
  assert.equal(await page.locator('.message').count(), 0);
});

test('A data file that is missing says that the chat could not be loaded, and may be tried again', async () => {
  const page = await open(people, { archive: { blockSize: 0 }, expect: gone });
  page.archive.removeFile('messages/_viewer/data/chat-Ben.js');
  await openChat(page, 'Ben');
  await page.getByText(english.couldNotOpen).waitFor();
  await page.getByText(`${english.couldNotLoad}: Ben`).waitFor();
  page.archive.write(
    'messages/_viewer/data/chat-Ben.js',
    'window.__CHAT_PAYLOAD = {"messages":[{"id":"1","me":false,"sender":"Ben","text":"back"}]};',
  );
  await openChat(page, 'Ben');
  await eventually(() => texts(page, '.body'), ['back']);
  assert.equal(await page.getByText(english.couldNotOpen).isVisible(), false);
});

test('A data file without messages counts as an empty list', async () => {
  const page = await open(people);
  page.archive.write('messages/_viewer/data/chat-Ana.js', 'window.__CHAT_PAYLOAD = {};');
  await openChat(page, 'Ana');
  await page.getByText(english.noMessages).waitFor();
});

test('A data file that is cut says that the chat could not be loaded', async () => {
  const page = await open(people, { archive: { blockSize: 0 }, expect: /^error: (SyntaxError.*)?$/ });
  page.archive.write('messages/_viewer/data/chat-Ana.js', 'window.__CHAT_PAYLOAD = {"messages":[{"id":');
  await openChat(page, 'Ana');
  await page.getByText(english.couldNotOpen).waitFor();
});

test('Data of other types than it should have counts as absent', async () => {
  const odd = [5, true, ['<b>'], { a: 1 }];
  const messages = odd.flatMap((value) => [
    message('x', { text: value }),
    message('x', { sender: value }),
    message('x', { media: value }),
    message('x', { media: { kind: 'photos', exported: true, path: value } }),
    message('x', { id: value }),
  ]);
  const chats = odd.map((value, index) => ({ id: `c${index}`, name: value, avatar: value, messages: [] }));
  const page = await open([{ name: 'Ana', messages }, ...chats]);
  await openChat(page, 'Ana');
  await eventually(() => page.locator('.message').count(), messages.length);
});

test('The address opens a chat, and a message in its chat', async () => {
  const chats = [{ name: 'Long', messages: many(500) }];
  const { id } = chats[0].messages[120];
  const page = await open(chats, { hash: `#chat=Long&message=${id}` });
  await page.locator('.message.target').waitFor();
  assert.equal(await page.locator('.message.target .body').textContent(), 'message 120');
  assert.equal(await page.title(), 'Long – Chat Archive');
});

test('An address of a search runs it', async () => {
  const page = await open(people, { hash: '#mode=messages&q=%22Ben+7%22' });
  await eventually(() => page.locator('#search-status').textContent(), 'Results: 1');
  assert.equal(await page.locator('#search').inputValue(), '"Ben 7"');
});

test('An address of a chat that is not there says so', async () => {
  const page = await open(people, { hash: '#chat=../../../etc/passwd' });
  await page.getByText(english.couldNotOpen).waitFor();
  assert.equal(
    page.requests.filter((url) => url.includes('passwd') && !url.includes('index.html')).length,
    0,
  );
});

test('Back and Forward walk through what was opened', async () => {
  const page = await open(people);
  await openChat(page, 'Ana');
  await openChat(page, 'Ben');
  await page.locator('#mode-messages').click();
  await page.goBack();
  assert.equal(await page.locator('#mode-chats').getAttribute('aria-selected'), 'true');
  await page.goBack();
  await eventually(() => title(page), 'Ana');
  await page.goBack();
  await page.locator('#thread-empty').waitFor();
  await page.goForward();
  await eventually(() => title(page), 'Ana');
});

test('Escape leaves the thread, and the keyboard is in the list again', async () => {
  const page = await open(people);
  await openChat(page, 'Ana');
  await page.locator('#messages').focus();
  await page.keyboard.press('Escape');
  await page.getByText(english.selectChat).waitFor();
  assert.equal(await page.evaluate(() => document.activeElement.id), 'chat-list');
});

test('A chat is shown again where it was left', async () => {
  const page = await open([{ name: 'Long', messages: many(500) }, ...people]);
  await openChat(page, 'Long');
  await page.locator('#messages').evaluate((view) => (view.scrollTop = view.scrollHeight * 0.4));
  await page.waitForTimeout(300);
  const top = async () => {
    const view = await page.locator('#messages').boundingBox();
    return page
      .locator('.message')
      .evaluateAll((all, y) => all.find((one) => one.getBoundingClientRect().bottom > y).dataset.id, view.y);
  };
  const before = await top();
  await openChat(page, 'Ben');
  await openChat(page, 'Long');
  assert.equal(await top(), before);
});

test('An archive in Portuguese speaks it throughout, with the 24-hour clock', async () => {
  const chats = [{ name: 'Clube', group: true, messages: [message('oi', { ts: someTime + 6 * 3600 })] }];
  const page = await open(chats, { archive: { strings: portuguese } });
  assert.equal(await page.locator('html').getAttribute('lang'), 'pt-BR');
  await openChat(page, 'Clube');
  assert.equal(await page.locator('#thread-sub').textContent(), 'Grupo · 1 mensagem');
  assert.deepEqual(await texts(page, '.message time'), ['15:00']);
  assert.deepEqual(await texts(page, '.day'), ['Sábado, 1 de junho de 2024']);
  assert.equal(await page.locator('#search').getAttribute('placeholder'), portuguese.filterChats);
  const spoken = await page
    .locator('[aria-label], [title], [placeholder]')
    .evaluateAll((all) =>
      all.flatMap((one) =>
        ['aria-label', 'title', 'placeholder'].map((name) => one.getAttribute(name)).filter(Boolean),
      ),
    );
  const foreign = Object.entries(english)
    .filter(([key, value]) => portuguese[key] !== value)
    .map(([, value]) => value);
  assert.deepEqual(
    spoken.filter((label) => foreign.includes(label)),
    [],
  );
});

test('Texts that an archive lacks stand in English', async () => {
  const page = await open([], {
    archive: { strings: { language: 'pt-BR', noChats: undefined, filterChats: 'Filtrar conversas' } },
  });
  await page.getByText(english.noChats).waitFor();
  assert.equal(await page.locator('#search').getAttribute('placeholder'), 'Filtrar conversas');
});

test('The script leaves nothing of its own in the page’s globals', async () => {
  const page = await open(people);
  await openChat(page, 'Ana');
  const own = await page.evaluate(() => {
    const frame = Object.getOwnPropertyNames(window);
    return frame
      .filter((name) =>
        /^(App|Thread|fold|text|CHATS|ARCHIVE|ARCHIVE_BASE|__CHAT_PAYLOAD|FALLBACK|STRINGS|BASE)$/.test(name),
      )
      .sort();
  });
  assert.deepEqual(own, ['ARCHIVE', 'ARCHIVE_BASE', 'CHATS', '__CHAT_PAYLOAD']);
});

for (const [region, strings, date, time] of [
  [undefined, {}, '5/31/24', '2:05 PM'],
  ['US', {}, '5/31/24', '2:05 PM'],
  ['GB', {}, '31/05/2024', '14:05'],
  ['DE', {}, '31/05/2024', '14:05'],
  ['419', portuguese, '31/05/2024', '14:05'],
  ['BR', portuguese, '31/05/2024', '14:05'],
  ['<b>', {}, '5/31/24', '2:05 PM'],
]) {
  test(`Dates are written as in the export’s region: ${strings.language ?? 'en'}, ${region}`, async () => {
    const ts = Date.UTC(2024, 4, 31, 14, 5) / 1000;
    const page = await open([{ name: 'Ana', messages: [message('hi', { ts })] }], { archive: { region, strings } });
    assert.deepEqual(await texts(page, '.chat time'), [date]);
    await openChat(page, 'Ana');
    const shown = (await page.locator('.message time').textContent()).replace(/\s/, ' ');
    assert.equal(shown, time);
  });
}

test('The first page says whose times they are', async () => {
  const page = await open(people, { archive: { timeZone: 'America/Sao_Paulo' } });
  await page.getByText('Dates and times are those of America/Sao Paulo.').waitFor();
});
