import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, makeArchive, many, portuguese } from './Support/index.js';
import { eventually, open, openChat, texts } from './Support/viewer.js';

const complaints = /ERR_FILE_NOT_FOUND|SyntaxError|^error: $/;
const people = ['Ana', 'Ben'].map((name) => ({ name, messages: many(30, (index) => `${name} ${index}`) }));

// Opens an archive after `damage` was done to it.
async function openDamaged(damage, { archive: options, ...context } = {}) {
  const archive = makeArchive(people, options);
  damage(archive);
  return open(archive, { expect: complaints, ...context });
}

async function expectTrouble(page, file, strings = english) {
  await page.getByRole('heading', { name: strings.brokenArchive }).waitFor();
  await page.getByText(strings.brokenArchiveHelp).waitFor();
  assert.equal(await page.locator('#trouble-file').textContent(), file);
  assert.equal(await page.getByText(english.noChats).isVisible(), false);
  assert.equal(await page.locator('#app').isVisible(), false);
}

const cut = (archive, name, text) => archive.write(`messages/_viewer/${name}`, text);

for (const [what, file, damage] of [
  ['The list of chats is missing', 'data/chats.js', (archive) => archive.removeFile('messages/_viewer/data/chats.js')],
  ['The list of chats is cut', 'data/chats.js', (archive) => cut(archive, 'data/chats.js', 'window.CHATS = [{"id":')],
  ['The script is missing', 'app.js', (archive) => archive.removeFile('messages/_viewer/app.js')],
  ['The script is cut', 'app.js', (archive) => cut(archive, 'app.js', '(function () {\n"use strict";\nconst')],
  ['The style sheet is missing', 'app.css', (archive) => archive.removeFile('messages/_viewer/app.css')],
  ['The style sheet is cut', 'app.css', (archive) => cut(archive, 'app.css', ':root { --page: #fff; }\n.tone-0 { --to')],
]) {
  test(`${what}: the page names the file and what to do`, async () => {
    await expectTrouble(await openDamaged(damage), `messages/_viewer/${file}`);
  });
}

test('The page alone, as out of a mail, says what belongs to it', async () => {
  const page = await openDamaged((archive) => {
    for (const name of ['data/chats.js', 'app.js', 'app.css']) archive.removeFile(`messages/_viewer/${name}`);
  });
  await expectTrouble(page, 'messages/_viewer/data/chats.js');
});

test('A broken archive says so in its language', async () => {
  const page = await openDamaged((archive) => archive.removeFile('messages/_viewer/app.js'), {
    archive: { strings: portuguese },
  });
  await expectTrouble(page, 'messages/_viewer/app.js', portuguese);
});

test('Without JavaScript the page says that it needs it', async () => {
  const page = await open(people, { javaScriptEnabled: false });
  await page.locator('noscript p').waitFor();
  assert.equal(await page.locator('noscript p').textContent(), english.noJavaScript);
  assert.equal(await page.getByText(english.brokenArchiveHelp).isVisible(), false);
});

test('A whole archive shows nothing of that, an empty one neither', async () => {
  for (const chats of [people, []]) {
    const page = await open(chats);
    await page.locator('#app').waitFor();
    assert.equal(await page.locator('#trouble').isVisible(), false);
  }
});

test('A chat whose file is missing or damaged opens from the blocks', async () => {
  for (const blockSize of [1000, 20]) {
    const page = await openDamaged(
      (archive) => {
        archive.removeFile('messages/_viewer/data/chat-Ana.js');
        archive.write('messages/_viewer/data/chat-Ben.js', 'window.__CHAT_PAYLOAD = {"messages":[{"id":');
      },
      { archive: { blockSize } },
    );
    for (const name of ['Ana', 'Ben']) {
      await openChat(page, name);
      await eventually(async () => (await texts(page, '.body')).at(-1), `${name} 29`);
    }
  }
});

test('A chat of which a part is nowhere offers to try again, and its transcript', async () => {
  const page = await openDamaged(
    (archive) => {
      archive.removeFile('messages/_viewer/data/chat-Ana.js');
      archive.removeFile('messages/_viewer/data/block-0.js');
    },
    { archive: { blockSize: 20 } },
  );
  await openChat(page, 'Ana');
  await page.getByText(english.couldNotOpen).waitFor();
  const transcript = page.getByRole('link', { name: english.openTranscript });
  assert.match(await transcript.getAttribute('href'), /messages\/Ana\/_transcript\.html$/);
  page.archive.write(
    'messages/_viewer/data/chat-Ana.js',
    'window.__CHAT_PAYLOAD = {"messages":[{"id":"1","me":false,"sender":"Ana","text":"back"}]};',
  );
  await page.getByRole('button', { name: english.tryAgain }).click();
  await eventually(() => texts(page, '.body'), ['back']);
  assert.equal(await page.getByText(english.couldNotOpen).isVisible(), false);
});
