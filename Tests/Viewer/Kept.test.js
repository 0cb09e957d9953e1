// What the archive keeps though the phone deleted it or no longer has it.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { many, message, mine, notice } from './Support/index.js';
import { portuguese } from './Support/strings.js';
import { eventually, narrow, open, openChat, texts } from './Support/viewer.js';

const opened = async (messages, { chat, ...options } = {}) => {
  const page = await open([{ name: 'Club', group: true, messages, ...chat }], options);
  await openChat(page, 'Club');
  return page;
};
const moment = 'Saturday, June 1, 2024 at 9:00 AM';
const titles = (page) => page.locator('.time').evaluateAll((all) => all.map((one) => one.title));
const labels = (page) => page.locator('.message').evaluateAll((all) => all.map((one) => one.getAttribute('aria-label')));

test('A message deleted later says so in words beside its time, and keeps all else', async () => {
  const page = await opened([
    message('a', { marks: ['deletedLater'] }),
    mine('b', { marks: ['deletedLater', 'starred'] }),
    message('c', { marks: ['deletedLater'], ts: undefined }),
    message('d', { marks: 'deletedLater' }),
    message('e'),
  ]);
  assert.deepEqual(await texts(page, '.time'), ['Deleted later 9:00 AM', 'Deleted later 9:00 AM', 'Deleted later ', '9:00 AM', '9:00 AM']);
  assert.deepEqual(await texts(page, '.body'), ['a', 'b', 'c', 'd', 'e']);
  assert.equal(await page.getByRole('img', { name: 'Starred' }).count(), 1);
  assert.deepEqual(await titles(page), [moment, moment, '', moment, moment]);
  assert.match(await page.locator('#messages').ariaSnapshot(), /Deleted later 9:00 AM/);
});

test('A message that is gone tells it in its tooltip and to screen readers', async () => {
  const page = await opened([
    message('a', { marks: ['gone'] }),
    message('b'),
    message('c', { marks: ['deletedLater', 'gone'], ts: undefined }),
    notice('Ben left', { marks: ['gone'] }),
  ]);
  const gone = 'No longer on the phone';
  assert.deepEqual(await titles(page), [`${moment}\n${gone}`, moment, gone, `${moment}\n${gone}`]);
  assert.deepEqual(await labels(page), [`Ana, ${moment}, ${gone}`, `Ana, ${moment}`, `Ana, ${gone}`, `${moment}, ${gone}`]);
  assert.equal(await page.getByRole('article', { name: gone }).count(), 3);
  assert.equal(await page.locator('#thread').getByText(gone).filter({ visible: true }).count(), 0);
});

test('A bubble is drawn no differently for being gone', async () => {
  const page = await opened([mine('a'), mine('a', { marks: ['gone'] }), mine('a')]);
  const look = await page.locator('.bubble').evaluateAll((all) =>
    all.map((one) => [one.offsetWidth, one.offsetHeight, getComputedStyle(one).backgroundColor, one.innerText]),
  );
  assert.deepEqual(look[1], look[0]);
  assert.deepEqual(look[1], look[2]);
});

test('Both are told in the archive’s language', async () => {
  const page = await opened([message('a', { marks: ['deletedLater', 'gone'] })], {
    chat: { gone: true },
    archive: { strings: portuguese },
  });
  assert.deepEqual(await texts(page, '.deleted-later'), ['Apagada depois ']);
  assert.match((await titles(page))[0], /\nNão está mais no telefone$/);
  assert.match((await labels(page))[0], /, Não está mais no telefone$/);
  assert.equal(await page.locator('#thread-gone').textContent(), 'Não está mais no telefone');
});

test('A long chat opened from its blocks tells both', async () => {
  const marks = { 5999: { marks: ['deletedLater'] }, 5998: { marks: ['gone'] } };
  const page = await open([{ name: 'Long', messages: many(6000, undefined, (index) => marks[index] ?? {}) }]);
  await openChat(page, 'Long');
  await eventually(() => page.requests.filter((url) => url.includes('block-')).length, 6);
  assert.equal(page.requests.filter((url) => url.includes('chat-Long')).length, 0);
  assert.equal(await page.locator('[aria-posinset="6000"] .deleted-later').textContent(), 'Deleted later ');
  assert.equal(await page.locator('.deleted-later').count(), 1);
  assert.match(await page.locator('[aria-posinset="5999"] .time').getAttribute('title'), /\nNo longer on the phone$/);
});

const chats = [
  { name: 'Ana', gone: true, messages: [message('hi')] },
  { name: 'Ben', messages: [message('hi')] },
  { name: 'Carla', gone: 'yes', messages: [message('hi')] },
];

test('A chat that is gone says so quietly below its name, and no other does', async () => {
  const page = await open(chats);
  const line = page.locator('#thread-gone');
  await openChat(page, 'Ana');
  assert.equal(await line.isVisible(), true);
  assert.equal(await line.textContent(), 'No longer on the phone');
  const look = (id) => page.locator(id).evaluate((one) => [getComputedStyle(one).color, getComputedStyle(one).fontSize]);
  assert.deepEqual(await look('#thread-gone'), await look('#thread-sub'));
  for (const name of ['Ben', 'Carla']) {
    await openChat(page, name);
    assert.equal(await line.isVisible(), false, name);
  }
});

test('The list hints at a chat that is gone with a muted sign that a screen reader names', async () => {
  const page = await open(chats);
  const sign = page.getByRole('option').getByRole('img', { name: 'No longer on the phone' });
  assert.equal(await sign.count(), 1);
  assert.equal(await page.getByRole('option', { name: /^Ana No longer on the phone/ }).count(), 1);
  assert.equal(await sign.getAttribute('title'), 'No longer on the phone');
  const colour = (locator) => locator.evaluate((one) => getComputedStyle(one).color);
  assert.equal(await colour(sign), await colour(page.locator('.chat time').first()));
  const heights = await page.locator('.chat').evaluateAll((all) => all.map((one) => one.offsetHeight));
  assert.deepEqual(heights, [72, 72, 72]);
});

test('On a narrow screen the line in the head is whole', async () => {
  for (const strings of [{}, portuguese]) {
    const page = await open(chats, { viewport: { ...narrow, width: 320 }, archive: { strings } });
    await openChat(page, 'Ana');
    const cut = await page.locator('#thread-gone').evaluate((one) => one.scrollWidth > one.clientWidth);
    assert.equal(cut, false);
  }
});
