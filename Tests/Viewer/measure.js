// Measures what a reader of a large archive would feel, against the limits it is held to:
//   node measure.js EXPORT
// Frames are looked at one by one from inside the page; memory is the renderer's own.
import { readFileSync } from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { launch } from './Support/browser.js';

const address = pathToFileURL(path.join(path.resolve(process.argv[2]), 'index.html')).href;
const figures = [];

function report(what, value, limit, unit) {
  const shown = unit === 's' ? (value / 1000).toFixed(2) : String(Math.round(value));
  const most = unit === 's' ? (limit / 1000).toFixed(1) : String(limit);
  const kept = value <= limit;
  figures.push(kept);
  console.log(
    `${kept ? 'kept  ' : 'MISSED'}  ${what.padEnd(62)} ${shown.padStart(7)} ${unit.padEnd(9)} limit ${most}`,
  );
}

// Runs inside the page before its own scripts. A frame is blank when part of the view
// has no message, or only the place of one whose data is under way.
function watchFrames() {
  const messages = document.getElementsByClassName('message');
  const watch = { peak: 0, frames: 0, blank: 0, run: 0, longest: 0, worst: 0, waits: [] };
  window.__watch = watch;
  let last = 0;
  const isBlank = () => {
    const view = document.getElementById('messages');
    const area = view?.getBoundingClientRect();
    if (!area?.height || !watch.on) return false;
    const items = [...view.getElementsByClassName('item')].map((item) => [
      item.getBoundingClientRect(),
      item,
    ]);
    const inView = items.filter(([box]) => box.bottom > area.top && box.top < area.bottom);
    if (inView.length === 0 || inView.some(([, item]) => item.classList.contains('pending'))) return true;
    const top = Math.min(...inView.map(([box]) => box.top));
    const bottom = Math.max(...inView.map(([box]) => box.bottom));
    return top > area.top + 1 || bottom < area.bottom - 1;
  };
  new MutationObserver(() => (watch.peak = Math.max(watch.peak, messages.length))).observe(document, {
    childList: true,
    subtree: true,
  });
  // Looks when all other callbacks of the frame have run and it is painted.
  const channel = new MessageChannel();
  const frame = (now) => {
    channel.port2.postMessage(now);
    requestAnimationFrame(frame);
  };
  channel.port1.onmessage = ({ data: now }) => {
    if (watch.on) {
      watch.frames++;
      if (last) watch.worst = Math.max(watch.worst, now - last);
      watch.run = isBlank() ? watch.run + 1 : 0;
      watch.blank += watch.run > 0 ? 1 : 0;
      watch.longest = Math.max(watch.longest, watch.run);
    }
    last = watch.on ? now : 0;
    watch.waits = watch.waits.filter((wait) => !wait());
  };
  requestAnimationFrame(frame);
  // The page's clock at the first frame for which `condition` holds.
  window.__frameWhen = (condition) =>
    new Promise((resolve) =>
      watch.waits.push(() => (condition() ? (resolve(performance.now()), true) : false)),
    );
}

const browser = await launch({ ignoreDefaultArgs: ['--hide-scrollbars'] });
const newPage = async () => {
  const page = await browser.newPage({ viewport: { width: 1280, height: 800 } });
  page.setDefaultTimeout(60_000);
  await page.addInitScript(watchFrames);
  return page;
};

const largest = (page) =>
  page.evaluate(() => window.CHATS.reduce((one, other) => (other.count > one.count ? other : one)));

// Installed before the act, read after it.
const newestInView = `(() => {
  const all = document.querySelectorAll('#messages .message');
  const last = all[all.length - 1];
  if (!last || last.getAttribute('aria-posinset') !== last.getAttribute('aria-setsize')) return false;
  const box = last.getBoundingClientRect();
  const view = document.getElementById('messages').getBoundingClientRect();
  return box.bottom <= view.bottom + 1 && box.top >= view.top;
})()`;

async function timeUntil(page, condition, act) {
  const waiting = page.evaluate(`(async () => {
    const from = performance.now();
    return (await window.__frameWhen(() => ${condition})) - from;
  })()`);
  await act();
  return waiting;
}

async function measureOpening() {
  const page = await newPage();
  const started = performance.now();
  await page.goto(address, { waitUntil: 'commit' });
  await page.locator('.chat').first().waitFor();
  await page.locator('#search').fill('Chat 2999');
  await page.waitForFunction(() => document.querySelectorAll('.chat').length === 1);
  report('the chat list is there and filters', performance.now() - started, 1000, 's');
  await page.locator('#search').fill('');
  const chat = await largest(page);
  console.log(`        the longest chat has ${chat.count} messages`);
  await page.locator('#search').fill(chat.name);
  report(
    'a click opens the longest chat at its newest message',
    await timeUntil(page, newestInView, () => page.locator('.chat').first().click()),
    2500,
    's',
  );
  await page.close();

  const linked = await newPage();
  const from = performance.now();
  await linked.goto(`${address}#chat=${encodeURIComponent(chat.id)}`, { waitUntil: 'commit' });
  await linked.evaluate(`window.__frameWhen(() => ${newestInView})`);
  report('a link opens the archive at that chat', performance.now() - from, 2500, 's');
  return linked;
}

const oldestInView = `(() => {
  const first = document.querySelector('#messages .message[aria-posinset="1"]');
  if (!first) return false;
  const box = first.getBoundingClientRect();
  const view = document.getElementById('messages').getBoundingClientRect();
  return box.top >= view.top - 1 && box.bottom <= view.bottom + 1;
})()`;

// The newest message answers the oldest one.
async function measureReply(page) {
  const strip = page.locator('#messages .message').last().locator('button.quote');
  report(
    'a reply leads to its original, the oldest message of that chat',
    await timeUntil(page, oldestInView, () => strip.click()),
    2500,
    's',
  );
  await page.locator('#messages').focus();
  await page.keyboard.press('End');
  await page.evaluate(`window.__frameWhen(() => ${newestInView})`);
}

const watching = (page, on) => page.evaluate((value) => Object.assign(window.__watch, { on: value }), on);

async function scrollBy(page, what, act) {
  await page.evaluate(() =>
    Object.assign(window.__watch, { blank: 0, run: 0, longest: 0, frames: 0, worst: 0, on: true }),
  );
  await act();
  const { frames, longest, blank, worst } = await watching(page, false);
  report(`blank frames in a row while scrolling ${what}`, longest, 1, 'frames');
  console.log(`        ${frames} frames, ${blank} blank, the longest took ${Math.round(worst)} ms`);
}

async function measureScrolling(page) {
  const view = await page.locator('#messages').boundingBox();
  const middle = [view.x + view.width / 2, view.y + view.height / 2];
  // Between the arrows at both ends of the bar.
  const bar = view.x + view.width - 8;
  const [top, bottom] = [view.y + 24, view.y + view.height - 27];
  await page.mouse.move(...middle);
  await scrollBy(page, 'by the wheel', async () => {
    for (let turn = 0; turn < 150; turn++) await page.mouse.wheel(0, -1500);
  });
  await page.locator('#messages').focus();
  await scrollBy(page, 'by keys', async () => {
    for (let press = 0; press < 60; press++) await page.keyboard.press('PageUp');
    for (const key of ['Home', 'End', 'PageUp', 'Home', 'PageDown', 'End']) {
      await page.keyboard.press(key);
      await page.waitForTimeout(250);
    }
  });
  await scrollBy(page, 'by dragging the bar from end to start', async () => {
    await page.mouse.move(bar, bottom);
    await page.mouse.down();
    for (let step = 0; step <= 120; step++)
      await page.mouse.move(bar, bottom - ((bottom - view.y) * step) / 120);
    await page.waitForTimeout(200);
  });
  const oldest = await page.evaluate(() =>
    document.querySelector('#messages .message').getAttribute('aria-posinset'),
  );
  report('the drag reached the oldest message: first one in the page', Number(oldest), 1, 'number');
  await scrollBy(page, 'by dragging the bar back in jerks', async () => {
    for (let step = 0; step <= 40; step++)
      await page.mouse.move(bar, top + ((bottom - top) * ((step * 17) % 41)) / 40);
    await page.mouse.move(bar, bottom + 20);
    await page.mouse.up();
    await page.waitForTimeout(200);
  });
  report('message elements at most', (await page.evaluate(() => window.__watch)).peak, 400, 'elements');
}

async function measureSearch(page, words, what) {
  await page.locator('#mode-messages').click();
  const first = timeUntil(page, "document.querySelector('.hit')", () => page.locator('#search').fill(words));
  const before = performance.now();
  await page.waitForFunction(
    () => document.getElementById('search-results').getAttribute('aria-busy') === 'true',
  );
  const firstAfter = await first;
  await page.waitForFunction(
    () => document.getElementById('search-results').getAttribute('aria-busy') === 'false',
  );
  const ended = performance.now() - before;
  const found = await page.locator('#search-status').textContent();
  console.log(`        search for ${JSON.stringify(words)}: ${found}`);
  report(`${what}: first results`, firstAfter, 1000, 's');
  report(`${what}: the end`, ended, 15_000, 's');
  await page.locator('#search').fill('');
}

async function measureMemory() {
  const session = await browser.newBrowserCDPSession();
  const { processInfo } = await session.send('SystemInfo.getProcessInfo');
  const peaks = processInfo
    .filter(({ type }) => type === 'renderer')
    .map(({ id }) => Number(/VmHWM:\s+(\d+)/.exec(readFileSync(`/proc/${id}/status`, 'utf8'))[1]) / 1000);
  report('the page’s memory at its peak (resident)', Math.max(...peaks), 1500, 'MB');
}

const page = await measureOpening();
await measureReply(page);
await measureScrolling(page);
await measureSearch(page, 'needle xylophonic', 'search, something found once');
await measureSearch(page, 'ok', 'search, something found often');
await page.close();
const fresh = await newPage();
await fresh.goto(address);
await measureSearch(fresh, 'to', 'search first thing, nothing loaded yet');
await measureMemory();
await browser.close();
if (figures.includes(false)) process.exit(1);
