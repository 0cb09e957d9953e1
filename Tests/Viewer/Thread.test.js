import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, many, message, mine, someTime } from './Support/index.js';
import { eventually, open, openChat, texts } from './Support/viewer.js';

const bodies = (page) => texts(page, '.message .body');
const hour = 3600;
const day = 24 * hour;

test('Messages stand in order, the owner’s on the other side, with their times', async () => {
  const page = await open([
    { name: 'Ana', messages: [message('hello'), mine('hi there', { ts: someTime + 90 })] },
  ]);
  await openChat(page, 'Ana');
  assert.deepEqual(await bodies(page), ['hello', 'hi there']);
  const times = (await texts(page, '.message time')).map((time) => time.replace(/\s/gu, ' '));
  assert.deepEqual(times, ['9:00 AM', '9:01 AM']);
  const [theirs, own] = await page.locator('.bubble').all();
  assert.ok((await theirs.boundingBox()).x < (await own.boundingBox()).x);
  assert.equal(await page.locator('#thread-sub').textContent(), '2 messages');
});

test('A group tells its number of messages, and each sender once per run', async () => {
  const from = (sender, text, ts) => message(text, { sender, ts: someTime + ts });
  const messages = [
    from('Ana', '1', 0),
    from('Ana', '2', 60),
    from('Ben', '3', 120),
    from('Ana', '4', 180),
    from('Ana', '5', 900),
  ];
  const page = await open([{ name: 'Club', group: true, messages }]);
  await openChat(page, 'Club');
  assert.equal(await page.locator('#thread-sub').textContent(), 'Group · 5 messages');
  assert.deepEqual(await texts(page, '.sender'), ['Ana', 'Ben', 'Ana', 'Ana']);
});

test('A chat of two shows no sender names', async () => {
  const page = await open([{ name: 'Ana', messages: [message('hello')] }]);
  await openChat(page, 'Ana');
  assert.equal(await page.locator('.sender').count(), 0);
});

test('Days are parted in the phone’s time zone, not in the browser’s', async () => {
  const late = Date.UTC(2024, 5, 2, 2, 30) / 1000; // 23:30 on 1 June in São Paulo
  const messages = [message('before midnight', { ts: late }), message('after', { ts: late + hour })];
  const page = await open([{ name: 'Ana', messages }], {
    archive: { timeZone: 'America/Sao_Paulo' },
    timezoneId: 'Asia/Tokyo',
  });
  await openChat(page, 'Ana');
  assert.deepEqual(await texts(page, '.day'), ['Saturday, June 1, 2024', 'Sunday, June 2, 2024']);
});

test('An unknown time zone leaves the browser’s own', async () => {
  const page = await open([{ name: 'Ana', messages: [message('x')] }], {
    archive: { timeZone: 'Mars/Olympus' },
    timezoneId: 'Asia/Tokyo',
  });
  await openChat(page, 'Ana');
  assert.match((await texts(page, '.message time'))[0], /^6:00\sPM$/u);
});

test('Today and yesterday are words', async () => {
  const noon = Math.floor(Date.now() / 1000 / day) * day + day / 2;
  const page = await open([
    { name: 'Ana', messages: [message('x', { ts: noon - day }), message('y', { ts: noon })] },
  ]);
  await openChat(page, 'Ana');
  assert.deepEqual(await texts(page, '.day'), ['Yesterday', 'Today']);
});

test('Undated messages stand first, under their own heading and without a time', async () => {
  const page = await open([{ name: 'Ana', messages: [message('when?', { ts: undefined }), message('now')] }]);
  await openChat(page, 'Ana');
  assert.deepEqual(await texts(page, '.day'), ['Undated', 'Saturday, June 1, 2024']);
  assert.equal(await page.locator('.message').first().locator('time').count(), 0);
});

test('A time that no calendar holds counts as none', async () => {
  const page = await open([{ name: 'Ana', messages: [message('far', { ts: 1e15 }), message('near')] }]);
  await openChat(page, 'Ana');
  assert.deepEqual(await texts(page, '.day'), ['Undated', 'Saturday, June 1, 2024']);
});

test('A message with neither text nor media is something quiet', async () => {
  const page = await open([{ name: 'Ana', messages: [message(undefined), message('x')] }]);
  await openChat(page, 'Ana');
  assert.equal(await page.locator('.notice').count(), 1);
  assert.match(await page.locator('.notice').textContent(), new RegExp(english.emptyMessage));
});

test('Markup in names and texts is shown as it was written, and nothing of it runs', async () => {
  const evil =
    '</script><img src=x onerror="window.ran = 1"><b>bold</b> &amp; `${window.ran = 2}` \u2028 end';
  const name = '<i onclick=x>"Mallory"</i> & {{title}}';
  const page = await open([{ id: 'm', name, messages: [message(evil, { sender: evil })], group: true }]);
  await page.locator('.chat').click();
  await eventually(() => bodies(page), [evil.replaceAll('`', '')]);
  assert.deepEqual(await texts(page, '.sender'), [evil]);
  assert.equal(await page.locator('#thread-title').textContent(), name);
  assert.equal(await page.evaluate(() => window.ran), undefined);
  assert.equal(await page.locator('.message img, .message b').count(), 0);
});

test('Line breaks and blanks stay as they were typed', async () => {
  const text = 'one\n\n  two\tthree';
  const page = await open([{ name: 'Ana', messages: [message(text)] }]);
  await openChat(page, 'Ana');
  const body = page.locator('.body');
  assert.equal(await body.textContent(), text);
  assert.ok((await body.evaluate((element) => element.getClientRects().length)) >= 3);
});

test('Right-to-left text reads from the right, its time at its end', async () => {
  const messages = [message('مرحبا، كيف حالك اليوم؟'), message('שלום'), message('hello')];
  const page = await open([{ name: 'نور', messages }]);
  await openChat(page, 'نور');
  const directions = await page
    .locator('.text')
    .evaluateAll((all) => all.map((one) => getComputedStyle(one).direction));
  assert.deepEqual(directions, ['rtl', 'rtl', 'ltr']);
  for (const [index, side] of [
    [0, 'left'],
    [2, 'right'],
  ]) {
    const words = await page.locator('.body').nth(index).boundingBox();
    const time = await page.locator('.message time').nth(index).boundingBox();
    assert.equal(time.x < words.x ? 'left' : 'right', side);
  }
});

test('Senders keep their colour from chat to chat, legible in light and dark', async () => {
  const names = Array.from({ length: 40 }, (_, index) => `Member ${index}`);
  const messages = names.map((sender, index) => message('x', { sender, ts: someTime + index }));
  const chats = [
    { name: 'One', group: true, messages },
    {
      name: 'Two',
      group: true,
      messages: [...messages].reverse().map((one, index) => ({ ...one, ts: someTime + index })),
    },
  ];
  for (const colorScheme of ['light', 'dark']) {
    const page = await open(chats, { colorScheme, viewport: { width: 1280, height: 3000 } });
    const coloursIn = async (chat) => {
      await openChat(page, chat);
      return page.locator('.sender').evaluateAll((all) =>
        Object.fromEntries(
          all.map((one) => {
            const bubble = getComputedStyle(one.closest('.bubble')).backgroundColor;
            return [one.textContent, [getComputedStyle(one).color, bubble]];
          }),
        ),
      );
    };
    const colours = await coloursIn('One');
    assert.equal(Object.keys(colours).length, 40);
    assert.deepEqual(await coloursIn('Two'), colours);
    assert.ok(new Set(Object.values(colours).map(([text]) => text)).size >= 8);
    for (const [text, bubble] of Object.values(colours))
      assert.ok(contrast(text, bubble) >= 4.5, `${text} on ${bubble}`);
  }
});

// WCAG 2.2, relative luminance and contrast ratio.
function contrast(...colours) {
  const luminances = colours.map((colour) => {
    const parts = colour
      .match(/[\d.]+/g)
      .slice(0, 3)
      .map((part) => part / 255);
    const [red, green, blue] = parts.map((part) =>
      part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4,
    );
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
  });
  const [dark, light] = luminances.sort((one, other) => one - other);
  return (light + 0.05) / (dark + 0.05);
}

test('One to three emoji alone are large', async () => {
  const messages = [message('🎉'), message('👩‍👩‍👧❤️👍🏽'), message('🎉🎉🎉🎉'), message('ok 🎉'), message('123')];
  const page = await open([{ name: 'Ana', messages }]);
  await openChat(page, 'Ana');
  assert.deepEqual(await texts(page, '.jumbo .body'), ['🎉', '👩‍👩‍👧❤️👍🏽']);
});

test('Messages are named by sender and moment, and numbered, for screen readers', async () => {
  const page = await open([{ name: 'Ana', messages: many(3) }]);
  await openChat(page, 'Ana');
  const article = page.getByRole('feed', { name: 'Ana' }).getByRole('article').nth(1);
  assert.match(await article.getAttribute('aria-label'), /^Ana, Saturday, June 1, 2024 at 9:01\sAM$/u);
  assert.equal(await article.getAttribute('aria-posinset'), '2');
  assert.equal(await article.getAttribute('aria-setsize'), '3');
});

test('Of a text that no phone could have sent the beginning is shown', async () => {
  const page = await open([{ name: 'Ana', messages: [message('ab '.repeat(700_000)), message('end')] }]);
  await openChat(page, 'Ana');
  await eventually(
    () => page.locator('.message .body').evaluateAll((all) => all.map((body) => body.textContent.length)),
    [65_537, 3],
  );
});
