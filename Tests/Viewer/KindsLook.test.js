import assert from 'node:assert/strict';
import { test } from 'node:test';
import { plainPicture, wav } from './Support/index.js';
import * as kinds from './Support/kinds.js';
import { portuguese } from './Support/strings.js';
import { narrow, open, openChat } from './Support/viewer.js';

const files = { 'Club/a.png': plainPicture, 'Club/round.mp4': wav(1), 'Club/dance.mp4': wav(1), 'Club/note.opus': wav(7), 'Club/plan.pdf': wav(1) };
const opened = async (messages, options) => {
  const page = await open([{ name: 'Club', group: true, messages }], { archive: { files }, ...options });
  await openChat(page, 'Club');
  return page;
};

// Texts of the thread whose contrast to what lies behind them (WCAG 2.2) is below 4.5.
const faint = (page) =>
  page.evaluate(() => {
    const parse = (colour) => {
      const [red, green, blue, alpha = 1] = colour.match(/-?[\d.]+(?:e-?\d+)?/g).map(Number);
      const scale = colour.startsWith('color(') ? 1 : 255;
      return { parts: [red, green, blue].map((part) => part / scale), alpha };
    };
    const over = ({ parts, alpha }, below) => parts.map((part, at) => part * alpha + below[at] * (1 - alpha));
    const behind = (one) => (one ? over(parse(getComputedStyle(one).backgroundColor), behind(one.parentElement)) : [1, 1, 1]);
    const luminance = (parts) => {
      const [red, green, blue] = parts.map((part) => (part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4));
      return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    };
    const found = [];
    for (const one of document.querySelectorAll('#messages *')) {
      if (![...one.childNodes].some((node) => node.nodeType === 3 && node.data.trim())) continue;
      if (one.closest('.video-sign, .bare.with-photo > .time')) continue;
      const back = behind(one);
      const text = over(parse(getComputedStyle(one).color), back);
      const [dark, light] = [luminance(back), luminance(text)].sort((a, b) => a - b);
      const contrast = (light + 0.05) / (dark + 0.05);
      if (contrast < 4.5) found.push(`${one.className}: “${one.textContent}” ${contrast.toFixed(2)}`);
    }
    return found;
  });

for (const colorScheme of ['light', 'dark']) {
  test(`Every kind can be read, ${colorScheme}`, async () => {
    const page = await opened(kinds.gallery(), { colorScheme, viewport: { width: 1000, height: 5200 } });
    assert.ok((await page.locator('.message').count()) > 25);
    await page.locator('button.fold').click();
    assert.deepEqual(await faint(page), []);
  });
}

test('On a narrow screen no kind is wider than it, however long its words', async () => {
  const long = 'Donaudampfschifffahrtsgesellschaft'.repeat(8);
  const widened = (value) => {
    if (typeof value === 'string') return value.length > 3 && !/^(\w+:\/\/|Club\/)/.test(value) ? `${value} ${long}` : value;
    if (Array.isArray(value)) return value.map(widened);
    if (value === null || typeof value !== 'object') return value;
    const kept = new Set(['id', 'kind', 'marks', 'mentions', 'media', 'part', 'emoji', 'url']);
    return Object.fromEntries(Object.entries(value).map(([key, member]) => [key, kept.has(key) ? member : widened(member)]));
  };
  const page = await opened(kinds.gallery().map(widened), { viewport: { ...narrow, height: 9000 } });
  const wide = await page.locator('#messages *').evaluateAll((all) =>
    all
      .filter((one) => !one.closest('svg') && one.getBoundingClientRect().right > innerWidth + 0.5)
      .filter((one) => !one.closest('.quote-name'))
      .map((one) => one.className),
  );
  assert.deepEqual(wide, []);
});

// Texts of one bubble that lie upon its time.
const covered = (page) =>
  page.evaluate(() => {
    const texts = (bubble, time) =>
      [...bubble.querySelectorAll('*')]
        .filter((one) => !time.contains(one) && !one.contains(time) && !one.matches('.bare.with-photo *'))
        .flatMap((one) => [...one.childNodes].filter((node) => node.nodeType === 3 && node.data.trim()));
    const boxOf = (node) => {
      const range = document.createRange();
      range.selectNodeContents(node);
      return range.getBoundingClientRect();
    };
    const meet = (one, other) =>
      one.left < other.right && other.left < one.right && one.top + 2 < other.bottom && other.top + 2 < one.bottom;
    return [...document.querySelectorAll('.time')].flatMap((time) =>
      texts(time.closest('.bubble, .notice'), time)
        .filter((node) => meet(boxOf(node), boxOf(time)))
        .map((node) => node.data),
    );
  });

for (const [width, colorScheme] of [
  [360, 'light'],
  [1000, 'dark'],
]) {
  test(`What stands beside a time can be read and lies upon no words, ${width} pixels wide, ${colorScheme}`, async () => {
    const page = await opened(kinds.kept(), {
      archive: { files, strings: portuguese },
      viewport: { width, height: 2400 },
      colorScheme,
    });
    assert.equal(await page.locator('.deleted-later').count(), 12);
    assert.deepEqual(await covered(page), []);
    assert.deepEqual(await faint(page), []);
  });
}

test('Every control among the kinds has a name and can be reached by the keyboard', async () => {
  const page = await opened(kinds.gallery(), { viewport: { width: 1000, height: 5200 } });
  const controls = page.locator('#messages :is(a, button)');
  const nameless = await controls.evaluateAll((all) =>
    all.filter((one) => one.tabIndex < 0 || !(one.getAttribute('aria-label') || one.textContent.trim())).map((one) => one.outerHTML),
  );
  assert.deepEqual(nameless, []);
  assert.ok((await controls.count()) > 10);
});

test('Every link among the kinds is of a kind that may be one, opens beside the archive and tells nothing', async () => {
  const page = await opened(kinds.gallery(), { viewport: { width: 1000, height: 5200 } });
  const links = await page
    .locator('#messages a')
    .evaluateAll((all) => all.map((one) => [one.protocol, one.target, [...one.relList].sort().join(' ')]));
  for (const [protocol, target, rel] of links) {
    assert.match(protocol, /^(https?|mailto|tel|file):$/);
    assert.deepEqual([target, rel], ['_blank', 'noopener noreferrer']);
  }
  assert.deepEqual(page.requests.filter((url) => !url.startsWith('file:')), []);
});
