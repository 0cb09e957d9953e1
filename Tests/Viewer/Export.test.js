// The archive as the program itself writes it, from the demo backup.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, before, test } from 'node:test';
import { fileURLToPath, pathToFileURL } from 'node:url';
import { english, portuguese } from './Support/index.js';
import { eventually, open } from './Support/viewer.js';

const build = process.env.TIDEWELL_BUILD ?? fileURLToPath(new URL('../../build/dev', import.meta.url));
const folder = path.join(mkdtempSync(path.join(tmpdir(), 'tidewell-viewer-')), 'Export #1 (50% of all)');
const run = (program, ...options) =>
  execFileSync(path.join(build, program), options, { stdio: ['ignore', 'ignore', 'inherit'] });
// Leaving a player's message breaks off the loading of its file.
const brokenOff = /ERR_ABORTED/;

const archiveIn = (name) => ({ url: pathToFileURL(path.join(folder, name, 'index.html')).href });

before(() => {
  const backup = path.join(folder, 'backup');
  run('Tests/Support/tidewell-demo-backup', backup);
  const device = path.join(
    backup,
    readdirSync(backup).find((name) => !name.endsWith('.txt')),
  );
  for (const locale of ['en_US', 'pt_BR']) {
    run(
      'TidewellCLI/tidewell',
      'export',
      device,
      path.join(folder, locale),
      '--locale',
      locale,
      '--time-zone',
      'America/Sao_Paulo',
      '--no-progress',
      '--password-file',
      path.join(backup, 'password.txt'),
    );
  }
  run(
    'Tests/Support/tidewell-stress-archive',
    path.join(folder, 'large'),
    '--chats',
    '40',
    '--messages',
    '30000',
    '--longest',
    '15000',
  );
});
after(() => rmSync(path.dirname(folder), { recursive: true, force: true }));

test('Every chat of an export opens at its newest message', async () => {
  const page = await open(archiveIn('en_US'), { expect: brokenOff });
  const chats = await page.evaluate(() => window.CHATS);
  assert.ok(chats.length > 30);
  for (const { id, name, count } of chats) {
    await page.evaluate((chat) => (location.hash = `#chat=${encodeURIComponent(chat)}`), id);
    await eventually(() => page.locator('#thread-title').textContent(), name);
    const last = page.locator('.message').last();
    await eventually(
      async () => (await page.locator('.message').count()) && (await last.getAttribute('aria-posinset')),
      count && String(count),
      name,
    );
  }
});

test('Pictures, avatars and stickers of an export are shown', async () => {
  const page = await open(archiveIn('en_US'), { expect: brokenOff });
  await eventually(
    async () =>
      (await page
        .locator('.chat .avatar img')
        .evaluateAll((all) => all.filter((one) => one.naturalWidth).length)) > 3,
    true,
  );
  await page.locator('#search').fill('Marina');
  await page.locator('.chat').first().click();
  await eventually(async () => (await page.locator('.media-photo.loaded').count()) > 0, true);
});

test('A search finds the same with and without the blocks', async () => {
  const counted = async (useBlocks) => {
    const page = await open(archiveIn('en_US'), { expect: brokenOff });
    if (!useBlocks) {
      await page.addInitScript(() => {
        let archive;
        Object.defineProperty(window, 'ARCHIVE', {
          get: () => archive,
          set: ({ blocks, ...rest }) => (archive = rest),
        });
      });
      await page.reload();
    }
    await page.locator('#mode-messages').click();
    await page.locator('#search').fill('voce');
    await eventually(
      async () => /^Results: \d/.test(await page.locator('#search-status').textContent()),
      true,
    );
    return page.locator('#search-status').textContent();
  };
  assert.equal(await counted(true), await counted(false));
});

test('An export in Portuguese speaks Portuguese', async () => {
  const page = await open(archiveIn('pt_BR'), { expect: brokenOff });
  assert.equal(await page.title(), portuguese.title);
  const brought = await page.evaluate(() => window.ARCHIVE.strings);
  assert.deepEqual(brought, portuguese);
  await page.locator('.chat').nth(1).click();
  assert.match(await page.locator('#thread-sub').textContent(), / mensagens$/);
});

test('The texts that an export brings are those that the script falls back to', async () => {
  const page = await open(archiveIn('en_US'), { expect: brokenOff });
  assert.deepEqual(await page.evaluate(() => window.ARCHIVE.strings), english);
});

test('The longest chat of a large archive is read from blocks to its beginning', async () => {
  const page = await open(archiveIn('large'), { expect: brokenOff });
  await page.locator('.chat').first().click();
  await eventually(
    async () =>
      (await page.locator('.message').count()) &&
      (await page.locator('.message').last().getAttribute('aria-posinset')),
    '15000',
  );
  await page.locator('#messages').focus();
  await page.keyboard.press('Home');
  await page.locator('.message', { hasText: 'The needle xylophonic in the haystack' }).waitFor();
  assert.equal(page.requests.filter((url) => url.includes('/chat-')).length, 0);
});
