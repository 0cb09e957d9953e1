// Opens archives in Chromium. Whatever the console complains about, every error and
// every refused or failed request fails the test, unless it is expected.
import assert from 'node:assert/strict';
import { after, afterEach, before } from 'node:test';
import { makeArchive } from './archive.js';
import { launch, wide } from './browser.js';

export { narrow, wide } from './browser.js';

let browser;
let opened = [];

before(async () => (browser = await launch()));
after(() => browser?.close());

afterEach(async () => {
  const closing = opened;
  opened = [];
  for (const { context, archive, problems } of closing) {
    await context.close();
    archive.remove?.();
    assert.deepEqual(problems, [], 'the page complained');
  }
});

// Opens an archive (or chats to make one of) and returns its page. Further options are
// those of the browser's context, and `hash`, `archive` and `expect`, a pattern of
// complaints that belong to the test.
export async function open(chats, { hash = '', archive: options, expect, ...context } = {}) {
  const archive = Array.isArray(chats) ? makeArchive(chats, options) : chats;
  const made = await browser.newContext({ viewport: wide, timezoneId: 'UTC', locale: 'en-US', ...context });
  const page = await made.newPage();
  page.setDefaultTimeout(15000);
  const problems = [];
  const complain = (problem) => {
    if (!expect?.test(problem)) problems.push(problem);
  };
  page.on(
    'console',
    (entry) => ['error', 'warning'].includes(entry.type()) && complain(`console: ${entry.text()}`),
  );
  page.on('pageerror', (error) => complain(`error: ${error.stack}`));
  page.on('requestfailed', (request) => complain(`failed: ${request.url()} ${request.failure()?.errorText}`));
  opened.push({ context: made, archive, problems });
  page.archive = archive;
  page.requests = [];
  page.on('request', (request) => page.requests.push(request.url()));
  await page.goto(archive.url + hash);
  return page;
}

// Waits until `read` gives `expected`.
export async function eventually(read, expected, label = '') {
  let last;
  for (let tries = 0; tries < 400; tries++) {
    last = await read();
    try {
      assert.deepEqual(last, expected);
      return;
    } catch {
      await new Promise((resolve) => setTimeout(resolve, 30));
    }
  }
  assert.deepEqual(last, expected, label);
}

// Waits until what was asked of the page has been drawn, however slow the machine is.
export const drawn = (page) =>
  page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));

export const texts = (page, selector) => page.locator(selector).allTextContents();

export const openChat = async (page, name) => {
  await page
    .locator('.chat', { has: page.locator('.chat-name', { hasText: name }) })
    .first()
    .click();
  await page.locator('#messages[aria-busy="false"]').waitFor();
};
