import assert from 'node:assert/strict';
import { test } from 'node:test';
import { many, message, mine, someTime } from './Support/index.js';
import { eventually, open, openChat, texts } from './Support/viewer.js';

const quote = (more = {}) => ({ me: false, name: 'Ana', part: 'text', thing: 'Shall we?', ...more });
const strip = (page) => page.locator('.quote');

const opened = async (messages, options) => {
  const page = await open([{ name: 'Club', group: true, messages }], options);
  await openChat(page, 'Club');
  return page;
};

test('A reply shows whom and what it answers, above its text and in the sender’s colour', async () => {
  const page = await opened([message('Shall we?', { id: '7' }), mine('Yes', { quote: quote({ to: '7' }) })]);
  assert.equal(await strip(page).locator('.quote-name').textContent(), 'Ana');
  assert.equal(await strip(page).locator('.quote-words').textContent(), 'Shall we?');
  const colour = (locator) => locator.evaluate((one) => getComputedStyle(one).color);
  assert.equal(await colour(page.locator('.quote-name')), await colour(page.locator('.sender')));
  assert.ok((await strip(page).boundingBox()).y < (await page.locator('.body', { hasText: 'Yes' }).boundingBox()).y);
});

test('What was answered is named when it has no words', async () => {
  const parts = ['photo', 'voiceMessage', 'sticker', 'liveLocation', 'text', 'hologram', '__proto__'];
  const page = await opened(
    parts.map((part) => message('x', { quote: quote({ part, thing: undefined }) })),
  );
  assert.deepEqual(await texts(page, '.quote-words'), [
    'Photo',
    'Voice message',
    'Sticker',
    'Live location',
    'Message',
    'Message',
    'Message',
  ]);
  assert.equal(await page.locator('.quote-words .icon').count(), 4);
});

for (const [how, press] of [
  ['A click', (button) => button.click()],
  ['Enter', (button) => button.press('Enter')],
]) {
  test(`${how} on the strip leads to the original across 250,000 messages`, async () => {
    const messages = many(250_000, undefined, (index) => ({
      id: String(index + 1),
      ...(index === 249_999 ? { quote: quote({ thing: 'message 5', to: '6' }) } : {}),
    }));
    const page = await opened(messages, { archive: { blockSize: 8000 } });
    await press(strip(page));
    await page.locator('.message.target').waitFor();
    assert.deepEqual(await texts(page, '.message.target .body'), ['message 5']);
    assert.equal(await page.evaluate(() => document.activeElement.id), 'messages');
  });
}

test('Without an original in the chat the strip is no button', async () => {
  const page = await opened([message('x', { quote: quote() })]);
  assert.equal(await strip(page).count(), 1);
  assert.equal(await page.locator('button.quote').count(), 0);
});

test('A strip whose original is gone leads nowhere and breaks nothing', async () => {
  const page = await opened([message('x', { quote: quote({ to: '99' }) })]);
  await strip(page).click();
  await page.waitForTimeout(100);
  assert.deepEqual(await texts(page, '.body'), ['x']);
});

test('Reactions stand under the bubble, with names for pointers and for screen readers', async () => {
  const page = await opened([
    message('x', {
      reactions: [
        { emoji: '👍', names: ['You', 'Ben'] },
        { emoji: '❤️', names: ['Carla'] },
      ],
    }),
  ]);
  const list = page.getByRole('list', { name: 'Reactions' });
  assert.equal(await list.getByRole('listitem').count(), 2);
  assert.equal(await page.getByRole('img', { name: '👍 You, Ben' }).getAttribute('title'), 'You, Ben');
  assert.deepEqual(await texts(page, '.chip'), ['👍2', '❤️']);
  const bubble = await page.locator('.bubble').boundingBox();
  const chip = await page.locator('.chip').first().boundingBox();
  assert.ok(chip.y > bubble.y && chip.y + chip.height > bubble.y + bubble.height);
  assert.ok(chip.x >= bubble.x);
});

test('Own messages have their reactions on their own side', async () => {
  const page = await opened([mine('x', { reactions: [{ emoji: '😂', names: ['Ana'] }] })]);
  const bubble = await page.locator('.bubble').boundingBox();
  const chip = await page.locator('.chip').boundingBox();
  assert.ok(chip.x + chip.width <= bubble.x + bubble.width + 1);
  assert.ok(chip.x > 600);
});

test('Markup in quotes and reactions stays text, and damage counts as absent', async () => {
  const evil = '<img src=x onerror="window.ran = 1">';
  const page = await opened([
    message('a', { quote: quote({ name: evil, thing: evil }), reactions: [{ emoji: '<b>', names: [evil] }] }),
    message('b', { quote: 'nonsense', reactions: { emoji: 'x' } }),
    message('c', { quote: { name: 7, thing: [], to: 3 }, reactions: [null, 'x', { emoji: 3 }, { emoji: 'x'.repeat(1e6) }] }),
    message('d', { quote: quote({ thing: 'y'.repeat(1e6) }) }),
  ]);
  assert.equal(await strip(page).first().locator('.quote-words').textContent(), evil);
  assert.deepEqual(await texts(page, '.chip'), ['<b>']);
  assert.equal(await strip(page).count(), 3);
  assert.ok((await strip(page).last().textContent()).length < 2000);
  assert.equal(await page.evaluate(() => window.ran), undefined);
});

test('A reply to a reply keeps its place while a target is shown', async () => {
  const messages = [
    message('one', { id: '1' }),
    message('two', { id: '2', ts: someTime + 400, quote: quote({ thing: 'one', to: '1' }) }),
    message('three', { id: '3', ts: someTime + 800, quote: quote({ thing: 'two', to: '2' }) }),
  ];
  const page = await opened(messages);
  await page.getByRole('button', { name: /two/ }).click();
  await eventually(() => texts(page, '.message.target .body'), ['two']);
  await page.getByRole('button', { name: /one/ }).click();
  await eventually(() => texts(page, '.message.target .body'), ['one']);
});
