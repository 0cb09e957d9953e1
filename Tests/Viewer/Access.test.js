import assert from 'node:assert/strict';
import { test } from 'node:test';
import { many, media, message, plainPicture } from './Support/index.js';
import { eventually, narrow, open, openChat } from './Support/viewer.js';

const chats = [
  {
    name: 'Ana',
    messages: [
      ...many(60),
      message(undefined, { media: media('photos', 'Ana/p.png'), ts: undefined }),
    ].reverse(),
  },
  { name: 'Ben', messages: [message('hello')] },
];
const archive = { files: { 'Ana/p.png': plainPicture } };
const focused = (page) => page.evaluate(() => document.activeElement.id || document.activeElement.tagName);

test('The keyboard reaches everything, in reading order', async () => {
  const page = await open(chats, { archive, hash: '#chat=Ben' });
  await page.locator('.message').waitFor();
  const order = [];
  for (let press = 0; press < 7; press++) {
    await page.keyboard.press('Tab');
    order.push(await focused(page));
  }
  assert.deepEqual(order, [
    'mode-chats',
    'search',
    'chat-list',
    'open-thread-search',
    'open-thread-date',
    'messages',
    'BODY',
  ]);
});

test('What has the keyboard’s focus can be seen', async () => {
  const page = await open(chats, { archive, hash: '#chat=Ben' });
  await page.locator('.message').waitFor();
  for (const id of [
    'mode-chats',
    'search',
    'chat-list',
    'open-thread-search',
    'open-thread-date',
    'messages',
  ]) {
    await page.keyboard.press('Tab');
    const outlined = await page.evaluate(() => {
      const at = document.activeElement;
      const holders = [at, at.closest('.field'), ...at.querySelectorAll('.active')].filter(Boolean);
      return holders.some(
        (one) =>
          getComputedStyle(one).outlineStyle === 'solid' &&
          parseFloat(getComputedStyle(one).outlineWidth) >= 2,
      );
    });
    assert.ok(outlined, id);
  }
});

test('Every control has a name, and ids are unique', async () => {
  const page = await open(chats, { archive });
  await openChat(page, 'Ana');
  const nameless = await page
    .locator('button, a, input, [role="listbox"], [role="feed"], [role="dialog"], [role="tablist"]')
    .evaluateAll((all) =>
      all
        .filter((one) => !(one.getAttribute('aria-label') || one.textContent.trim() || one.labels?.length))
        .map((one) => one.outerHTML),
    );
  assert.deepEqual(nameless, []);
  const repeated = await page.evaluate(() => {
    const ids = [...document.querySelectorAll('[id]')].map((one) => one.id);
    return ids.filter((id, at) => ids.indexOf(id) !== at);
  });
  assert.deepEqual(repeated, []);
});

test('References of roles lead somewhere', async () => {
  const page = await open(chats, { archive });
  const broken = await page
    .locator('[aria-controls], [aria-labelledby]')
    .evaluateAll((all) =>
      all
        .flatMap((one) => [one.getAttribute('aria-controls'), one.getAttribute('aria-labelledby')])
        .filter((id) => id && !document.getElementById(id)),
    );
  assert.deepEqual(broken, []);
});

test('The tabs follow the arrow keys', async () => {
  const page = await open(chats, { archive });
  await page.locator('#mode-chats').focus();
  await page.keyboard.press('ArrowRight');
  assert.equal(await focused(page), 'mode-messages');
  assert.equal(await page.locator('#messages-panel').isVisible(), true);
  await page.keyboard.press('ArrowLeft');
  assert.equal(await page.locator('#chats-panel').isVisible(), true);
});

test('On a narrow screen the keyboard goes with what is shown', async () => {
  const page = await open(chats, { archive, viewport: narrow });
  await page.locator('#chat-list').focus();
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('Enter');
  await eventually(() => focused(page), 'messages');
  await page.keyboard.press('Escape');
  await eventually(() => focused(page), 'chat-list');
});

test('Nothing moves by itself for readers who ask for that', async () => {
  const page = await open(chats, {
    archive,
    reducedMotion: 'reduce',
    hash: `#chat=Ana&message=${chats[0].messages[30].id}`,
  });
  await page.locator('.message.target').waitFor();
  const moving = await page.evaluate(
    () =>
      [...document.querySelectorAll('*')].filter((one) => {
        const style = getComputedStyle(one);
        return (
          style.animationName !== 'none' ||
          style.transitionDuration.split(',').some((time) => parseFloat(time) > 0)
        );
      }).length,
  );
  assert.equal(moving, 0);
});

test('Light and dark follow the system, and texts stand out in both', async () => {
  const wall = {};
  for (const colorScheme of ['light', 'dark']) {
    const page = await open(chats, { archive, colorScheme });
    await openChat(page, 'Ben');
    wall[colorScheme] = await page
      .locator('#thread')
      .evaluate((one) => getComputedStyle(one).backgroundColor);
  }
  assert.notEqual(wall.light, wall.dark);
});

test('Print shows the open thread’s messages and nothing around them', async () => {
  const page = await open(chats, { archive });
  await openChat(page, 'Ana');
  await page.emulateMedia({ media: 'print' });
  assert.equal(await page.locator('#sidebar').isVisible(), false);
  assert.equal(await page.locator('#open-thread-search').isVisible(), false);
  const { bottom, clipped } = await page.evaluate(() => ({
    bottom: document.querySelector('#messages .window').getBoundingClientRect().bottom,
    clipped: document.documentElement.scrollHeight,
  }));
  assert.ok(clipped >= bottom - 1 && bottom > 1000, `${bottom} of ${clipped}`);
  const [title, first] = [
    await page.locator('#thread-title').boundingBox(),
    await page.locator('.message').first().boundingBox(),
  ];
  assert.ok(title.y < first.y);
});

test('Nothing overflows sideways, wide or narrow', async () => {
  const words = 'unbroken'.repeat(60);
  const wordy = [
    {
      id: 'wordy',
      name: words,
      group: true,
      messages: [
        message(words, { sender: words }),
        message(`https://example.com/${words}`, { media: media('documents', `Ana/${words}.pdf`) }),
      ],
    },
  ];
  for (const viewport of [
    { width: 1280, height: 700 },
    { width: 800, height: 700 },
    narrow,
    { width: 320, height: 600 },
  ]) {
    const page = await open(wordy, { viewport });
    const check = async () => {
      const wide = await page.evaluate(() =>
        [
          ...document.querySelectorAll(
            '.chat, .bubble, .field, .modes, .thread-head, .round, .document, .day, h1',
          ),
        ]
          .filter((one) => one.getClientRects().length)
          .filter(
            (one) => one.getBoundingClientRect().right > innerWidth || one.getBoundingClientRect().left < 0,
          )
          .map((one) => one.id || one.className),
      );
      assert.deepEqual(wide, [], `${viewport.width} wide`);
      const sideways = await page.evaluate(() =>
        ['chat-list', 'messages', 'sidebar', 'thread'].filter((id) => {
          const one = document.getElementById(id);
          return one.scrollWidth > one.clientWidth;
        }),
      );
      assert.deepEqual(sideways, [], `${viewport.width} wide`);
    };
    await check();
    await page.locator('.chat').click();
    await page.locator('.message').first().waitFor();
    await check();
  }
});
