// Takes pictures of the viewer's main states, light and dark, of a demo archive:
//   node screenshots.js ENGLISH-EXPORT PORTUGUESE-EXPORT FOLDER
import { mkdirSync } from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { makeArchive } from './Support/archive.js';
import { launch, narrow } from './Support/browser.js';
import { plainPicture, wav } from './Support/files.js';
import { gallery, kept } from './Support/kinds.js';

const [english, portuguese, folder] = process.argv.slice(2);
const pageOf = (destination) => pathToFileURL(path.join(destination, 'index.html')).href;
const desktop = { width: 1280, height: 832 };

const openNamed = (name) => async (page) => {
  await page.locator('#search').fill(name);
  await page.locator('.chat').first().click();
  if (await page.locator('#search').isVisible()) await page.locator('#search').fill('');
  await page.locator('#messages[aria-busy="false"]').waitFor();
};

const upBy = (pixels) => async (page) => {
  await page.locator('#messages').evaluate((view, by) => view.scrollBy(0, -by), pixels);
};

// The message with these words stands above the button at the lower edge.
const downTo = (words) => async (page) => {
  const message = page.locator('.message', { hasText: words }).first();
  for (let tries = 0; tries < 40 && !(await message.count()); tries++) {
    await upBy(500)(page);
    await page.waitForTimeout(120);
  }
  // Heights above it settle only once it is in view.
  for (let tries = 0; tries < 3; tries++) {
    await message.evaluate((one) => one.scrollIntoView({ block: 'end' }));
    await page.waitForTimeout(200);
  }
  await upBy(-84)(page);
};

const search = (words) => async (page) => {
  await page.locator('#mode-messages').click();
  await page.locator('#search').fill(words);
  await page.locator('#search-results[aria-busy="false"]').waitFor();
};

const firstPicture = async (page) => {
  for (let tries = 0; tries < 40 && !(await page.locator('.media-photo.loaded').count()); tries++) {
    await upBy(500)(page);
    await page.waitForTimeout(120);
  }
  await page.locator('.media-photo.loaded .picture').first().click();
  await page.locator('#lightbox.loaded').waitFor();
};

const click = (selector) => (page) => page.locator(selector).click();
const type = (selector, words) => (page) => page.locator(selector).fill(words);

// Everything that a message can be, from the first one on.
const everyKind = () => clubOf(gallery());
const everyKept = () => clubOf(kept(), { gone: true });
const clubOf = (messages, more = {}) => {
  const files = { 'Club/a.png': plainPicture, 'Club/round.mp4': wav(1), 'Club/dance.mp4': wav(1), 'Club/note.opus': wav(7), 'Club/plan.pdf': wav(1) };
  return makeArchive([{ name: 'Club', group: true, messages, ...more }], { files });
};
const fromTheFirst = async (page) => {
  await page.locator('#messages').evaluate((view) => (view.scrollTop = 0));
  await page.locator('#messages[aria-busy="false"] .oldest').waitFor();
};
const tall = { width: 1100, height: 4400 };

const scenes = {
  kinds: { archive: everyKind, viewport: tall, steps: [openNamed('Club'), fromTheFirst, (page) => page.locator('.fold').click()] },
  'kinds-narrow': { archive: everyKind, viewport: { ...tall, width: 390 }, steps: [openNamed('Club'), fromTheFirst] },
  'kinds-forced': { archive: everyKind, viewport: tall, forcedColors: 'active', steps: [openNamed('Club'), fromTheFirst] },
  kept: { archive: everyKept, viewport: { ...tall, height: 2400 }, steps: [openNamed('Club')] },
  'kept-narrow': { archive: everyKept, viewport: { ...narrow, height: 2400 }, steps: [openNamed('Club')] },
  list: { steps: [] },
  thread: { steps: [openNamed('Marina')] },
  group: { steps: [openNamed('Família'), downTo('Qual fim de semana?')] },
  contact: { steps: [openNamed('Marina'), downTo('Fechado')] },
  round: { steps: [openNamed('Futebol'), downTo('Quadra do seu Zé')] },
  poll: { steps: [openNamed('Book Club')] },
  business: { steps: [openNamed('Padaria')] },
  pictures: { steps: [openNamed('Grace'), upBy(600)] },
  rtl: { steps: [openNamed('ليلى')] },
  hebrew: { steps: [openNamed('משפחה')] },
  search: { steps: [search('bolo'), click('.hit >> nth=1')] },
  'search-in-chat': { steps: [openNamed('Ana'), click('#open-thread-search'), type('#thread-query', 'café')] },
  date: { steps: [openNamed('Ana'), click('#open-thread-date')] },
  lightbox: { steps: [openNamed('Ana'), firstPicture] },
  portuguese: { export: portuguese, steps: [search('que'), click('.hit >> nth=1')] },
  'narrow-list': { viewport: narrow, steps: [] },
  'narrow-thread': { viewport: narrow, steps: [openNamed('Família')] },
  'narrow-poll': { viewport: narrow, steps: [openNamed('Book Club'), upBy(250)] },
  'narrow-business': { viewport: narrow, steps: [openNamed('Padaria'), upBy(300)] },
  'narrow-search': { viewport: narrow, steps: [search('ok')] },
  'narrow-lightbox': { viewport: narrow, steps: [openNamed('Ana'), firstPicture] },
  empty: { archive: () => makeArchive([]), steps: [] },
  'no-results': { steps: [search('xyzzy')] },
  unloadable: { steps: [(page) => page.goto(`${page.url().split('#')[0]}#chat=nobody`)] },
};

mkdirSync(folder, { recursive: true });
const browser = await launch();
const wanted = process.env.SCENES ? process.env.SCENES.split(',') : null;
for (const [name, scene] of Object.entries(scenes)) {
  if (wanted && !wanted.includes(name)) continue;
  for (const colorScheme of ['light', 'dark']) {
    const archive = scene.archive?.();
    const context = await browser.newContext({
      viewport: scene.viewport ?? desktop,
      colorScheme,
      forcedColors: scene.forcedColors,
      deviceScaleFactor: 1,
    });
    const page = await context.newPage();
    page.setDefaultTimeout(5000);
    await page.goto(archive?.url ?? pageOf(scene.export ?? english));
    for (const step of scene.steps) await step(page);
    await page.waitForTimeout(500);
    await page.screenshot({ path: path.join(folder, `${name}-${colorScheme}.png`) });
    await context.close();
    archive?.remove();
  }
}
await browser.close();
