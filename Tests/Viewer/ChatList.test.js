import assert from 'node:assert/strict';
import { test } from 'node:test';
import { many, message, mine, png, portuguese, someTime } from './Support/index.js';
import { eventually, narrow, open, openChat, texts } from './Support/viewer.js';

const people = [
  { name: 'Ana Souza', messages: [message('see you')] },
  { name: 'João Conceição', messages: [message('até já')] },
  { name: 'Family', group: true, messages: [message('dinner?'), message('yes')] },
  { name: 'ZOË 🎉', messages: [message('hi')] },
];
const names = (page) => texts(page, '.chat-name');

test('The list shows every chat in the order of the archive, with its preview', async () => {
  const page = await open(people);
  assert.deepEqual(
    await names(page),
    people.map((chat) => chat.name),
  );
  assert.deepEqual(await texts(page, '.chat-preview'), ['see you', 'até já', 'yes', 'hi']);
  assert.equal(await page.title(), 'Chat Archive');
});

test('Groups carry a mark that a screen reader names', async () => {
  const page = await open(people);
  assert.equal(await page.getByRole('img', { name: 'Group' }).count(), 1);
  assert.match(await page.getByRole('option').nth(2).textContent(), /Family/);
});

test('A chat without a picture shows initials, one with a picture the picture', async () => {
  const picture = png(4, 4, () => [10, 120, 200]);
  const chats = [
    { name: 'Ana Souza', avatar: 'avatars/ana #1.png' },
    { name: 'João da Conceição' },
    { name: '+55 11 98765' },
  ];
  const page = await open(chats, { archive: { files: { 'avatars/ana #1.png': picture } } });
  const first = page.locator('.chat .avatar').first();
  await eventually(() => first.locator('img').evaluate((img) => img.naturalWidth), 4);
  assert.deepEqual(await texts(page, '.chat .avatar'), ['', 'JC', '']);
});

test('A missing avatar falls back to the initials', async () => {
  const page = await open([{ name: 'Ana Souza', avatar: 'avatars/gone.jpeg' }], {
    expect: /gone\.jpeg|ERR_FILE_NOT_FOUND/,
  });
  await eventually(() => texts(page, '.chat .avatar'), ['AS']);
});

test('Filtering ignores case and accents and says when no chat matches', async () => {
  const page = await open(people);
  const filter = page.getByRole('searchbox', { name: 'Filter chats' });
  await filter.fill('joao CON');
  assert.deepEqual(await names(page), ['João Conceição']);
  await filter.fill('  zoe ');
  assert.deepEqual(await names(page), ['ZOË 🎉']);
  await filter.fill('nobody');
  assert.deepEqual(await names(page), []);
  await page.getByText('No chats match.').waitFor();
  await page.getByRole('button', { name: 'Clear' }).click();
  assert.deepEqual(
    await names(page),
    people.map((chat) => chat.name),
  );
  assert.equal(await page.getByText('No chats match.').isVisible(), false);
});

test('An empty archive says so', async () => {
  const page = await open([]);
  await page.getByText('No chats in this archive.').waitFor();
});

test('A chat without messages is listed and opens with a word about it', async () => {
  const page = await open([...people, { name: 'Silent' }]);
  assert.equal((await names(page)).at(-1), 'Silent');
  assert.equal(await page.locator('.chat').last().locator('time').count(), 0);
  await openChat(page, 'Silent');
  await page.getByText('No messages in this chat.').waitFor();
});

test('The date of a chat is a time today, a word yesterday, a weekday this week, else a short date', async () => {
  const day = 86400;
  const noon = Math.floor(Date.now() / 1000 / day) * day + day / 2;
  const at = (name, ts) => ({ name, messages: [message('x', { ts })] });
  const page = await open([at('A', noon), at('B', noon - day), at('C', noon - 3 * day), at('D', someTime)]);
  const weekday = new Intl.DateTimeFormat('en', { weekday: 'long', timeZone: 'UTC' }).format(
    (noon - 3 * day) * 1000,
  );
  const shown = (await texts(page, '.chat time')).map((time) => time.replace(/\s/gu, ' '));
  assert.deepEqual(shown, ['12:00 PM', 'Yesterday', weekday, '6/1/24']);
});

test('From the filter, arrow keys choose a chat and Enter opens it', async () => {
  const page = await open(people);
  await page.getByRole('searchbox').focus();
  for (const key of ['ArrowDown', 'ArrowDown', 'ArrowDown', 'ArrowUp']) await page.keyboard.press(key);
  const active = await page.getByRole('searchbox').getAttribute('aria-activedescendant');
  assert.match(await page.locator(`#${active}`).textContent(), /João/);
  await page.keyboard.press('Enter');
  await page.getByRole('heading', { name: 'João Conceição' }).waitFor();
  assert.equal(
    await page.getByRole('option', { selected: true }).locator('.chat-name').textContent(),
    'João Conceição',
  );
});

test('The list itself is one stop of the keyboard, with Home and End', async () => {
  const page = await open(people);
  await page.getByRole('listbox', { name: 'Chats' }).focus();
  await page.keyboard.press('End');
  await page.keyboard.press('Enter');
  await page.getByRole('heading', { name: 'ZOË 🎉' }).waitFor();
  await page.keyboard.press('Home');
  await page.keyboard.press('Enter');
  await page.getByRole('heading', { name: 'Ana Souza' }).waitFor();
});

test('Thousands of chats make a few dozen rows, and the last is reached by keyboard', async () => {
  const chats = Array.from({ length: 3000 }, (_, index) => ({
    name: `Chat ${index}`,
    messages: [mine('x')],
  }));
  const page = await open(chats);
  assert.ok((await page.locator('.chat').count()) < 60);
  await page.getByRole('listbox', { name: 'Chats' }).focus();
  await page.keyboard.press('End');
  await page.getByText('Chat 2999', { exact: true }).waitFor();
  assert.ok((await page.locator('.chat').count()) < 60);
  assert.equal(await page.getByRole('option').last().getAttribute('aria-posinset'), '3000');
});

test('On a narrow screen the thread lies over the list, and Back returns to it', async () => {
  const page = await open(people, { viewport: narrow });
  assert.equal(await page.locator('#thread').isVisible(), false);
  await openChat(page, 'Ana Souza');
  assert.equal(await page.locator('#sidebar').isVisible(), false);
  await page.getByRole('button', { name: 'Back' }).click();
  await page.locator('#sidebar').waitFor();
  assert.equal(await page.locator('#thread').isVisible(), false);
  await openChat(page, 'Family');
  await page.keyboard.press('Escape');
  await page.locator('#sidebar').waitFor();
  assert.equal(await page.evaluate(() => location.hash), '');
});

test('Two chats of one name are told apart by their numbers, in results too', async () => {
  const twins = ['5511900001111', '5511900002222'].map((number) => ({
    id: number,
    name: 'Ana',
    jid: `${number}@s.whatsapp.net`,
    messages: [message('hello')],
  }));
  const page = await open([...twins, { name: 'Ben', jid: '5511900003333@s.whatsapp.net', messages: [] }]);
  const numbers = ['+5511900001111 · ', '+5511900002222 · '];
  assert.deepEqual(await texts(page, '.chat-number'), numbers);
  await page.locator('#mode-messages').click();
  await page.locator('#search').fill('hello');
  await eventually(() => texts(page, '.hit .chat-number'), numbers);
});

test('The head tells a person’s number, unless it is the name, and counts in the right form', async () => {
  const page = await open([
    { name: 'Ana', jid: '5511900001111@s.whatsapp.net', messages: [message('one')] },
    { name: '+55 11 90000-2222', jid: '5511900002222@s.whatsapp.net', messages: many(2) },
    { name: 'Club', jid: '5511900001111-1500000000@g.us', group: true, messages: [message('one')] },
  ]);
  for (const [name, head] of [
    ['Ana', '+5511900001111 · 1 message'],
    ['+55 11 90000-2222', '2 messages'],
    ['Club', 'Group · 1 message'],
  ]) {
    await openChat(page, name);
    await eventually(() => page.locator('#thread-sub').textContent(), head);
  }
});

test('In Portuguese one message is one', async () => {
  const page = await open([{ name: 'Ana', messages: [message('um')] }], { archive: { strings: portuguese } });
  await openChat(page, 'Ana');
  assert.equal(await page.locator('#thread-sub').textContent(), '1 mensagem');
});
