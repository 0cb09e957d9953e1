import assert from 'node:assert/strict';
import { test } from 'node:test';
import { english, media, message, plainPicture, png, someTime, wav } from './Support/index.js';
import { eventually, open, openChat, texts } from './Support/viewer.js';

const gone = /ERR_FILE_NOT_FOUND|ERR_ABORTED/;
const kinds = ['photos', 'videos', 'voiceNotes', 'stickers', 'documents'];
const folder = 'Ana #1 50% done? & co';

const withMedia = (...all) => [
  { name: 'Ana', messages: all.map((one) => message(undefined, { media: one })) },
];

test('Pictures are found in folders with awkward names and keep their shape’s place', async () => {
  const photo = media('photos', `${folder}/a b#c%d?.png`);
  const page = await open(withMedia(photo), {
    archive: { files: { [photo.path]: png(30, 40, () => [90, 90, 200]) } },
  });
  await openChat(page, 'Ana');
  const image = page.locator('.media-photo img');
  await eventually(() => image.evaluate((img) => img.naturalWidth), 30);
  assert.equal(
    await image.getAttribute('src'),
    'messages/Ana%20%231%2050%25%20done%3F%20%26%20co/a%20b%23c%25d%3F.png',
  );
});

test('Media that were not exported say so, each kind in its words', async () => {
  const page = await open(withMedia(...kinds.map((kind) => ({ kind, exported: false, name: 'x' }))));
  await openChat(page, 'Ana');
  assert.deepEqual(await texts(page, '.absent'), [
    english.photoNotExported,
    english.videoNotExported,
    english.voiceNoteNotExported,
    english.stickerNotExported,
    english.documentNotExported,
  ]);
  assert.equal(
    page.requests.filter((url) => !url.includes('_viewer') && !url.endsWith('index.html')).length,
    0,
  );
});

test('Files that fail to load say so without moving anything', async () => {
  const page = await open(withMedia(...kinds.slice(0, 4).map((kind) => media(kind, `Ana/gone-${kind}`))), {
    expect: gone,
  });
  await openChat(page, 'Ana');
  const before = await page
    .locator('.message')
    .evaluateAll((all) => all.map((one) => one.getBoundingClientRect().height));
  await eventually(
    () => texts(page, '.absent'),
    [english.missingImage, english.missingVideo, english.missingVoiceNote, english.missingSticker],
  );
  const after = await page
    .locator('.message')
    .evaluateAll((all) => all.map((one) => one.getBoundingClientRect().height));
  assert.deepEqual(after, before);
});

test('A file of a format that the browser lacks can still be opened', async () => {
  const files = { 'Ana/note #1.opus': 'x', 'Ana/photo.heic': 'x' };
  const page = await open(
    [
      ...withMedia(media('voiceNotes', 'Ana/note #1.opus'), media('photos', 'Ana/photo.heic')),
      { name: 'Ben', messages: [message('x')] },
    ],
    { archive: { files } },
  );
  const addresses = () =>
    page.locator('a.absent').evaluateAll((all) => all.map((link) => link.getAttribute('href')));
  const expected = ['messages/Ana/note%20%231.opus', 'messages/Ana/photo.heic'];
  await openChat(page, 'Ana');
  await eventually(addresses, expected);
  await openChat(page, 'Ben');
  await openChat(page, 'Ana');
  assert.deepEqual(await addresses(), expected);
  assert.equal(await page.locator('a.absent').first().getAttribute('title'), english.openOriginal);
});

test('A picture that is missing is asked for only once', async () => {
  const page = await open(
    [...withMedia(media('photos', 'Ana/gone.jpg')), { name: 'Ben', messages: [message('x')] }],
    { expect: gone },
  );
  const asked = () => page.requests.filter((url) => url.endsWith('gone.jpg')).length;
  await openChat(page, 'Ana');
  await eventually(() => texts(page, '.absent'), [english.missingImage]);
  await openChat(page, 'Ben');
  await openChat(page, 'Ana');
  await eventually(() => texts(page, '.absent'), [english.missingImage]);
  assert.equal(asked(), 1);
});

test('Nothing moves while pictures load', async () => {
  const files = Object.fromEntries(
    Array.from({ length: 12 }, (_, index) => [
      `Ana/${index}.png`,
      png(40 + index * 9, 300 - index * 20, () => [9, 99, 9]),
    ]),
  );
  const page = await open(withMedia(...Object.keys(files).map((path) => media('photos', path))), {
    archive: { files },
  });
  await page.evaluate(() => {
    window.moves = [];
    new PerformanceObserver((list) =>
      window.moves.push(...list.getEntries().map((entry) => entry.value)),
    ).observe({
      type: 'layout-shift',
      buffered: true,
    });
  });
  await openChat(page, 'Ana');
  await eventually(async () => (await page.locator('.media-photo.loaded').count()) > 1, true);
  await page.waitForTimeout(200);
  const image = await page.locator('.media-photo').last().boundingBox();
  assert.equal(image.width, image.height);
  assert.deepEqual(await page.evaluate(() => window.moves), []);
});

test('Voice notes have a player and a link to download them', async () => {
  const note = media('voiceNotes', 'Ana/note 1.wav');
  const page = await open(withMedia(note), { archive: { files: { [note.path]: wav(3) } } });
  await openChat(page, 'Ana');
  await eventually(() => page.locator('audio[controls]').evaluate((audio) => Math.round(audio.duration)), 3);
  const link = page.getByRole('link', { name: 'Download audio' });
  assert.equal(await link.getAttribute('href'), 'messages/Ana/note%201.wav');
  assert.equal(await link.getAttribute('download'), 'note 1.wav');
});

test('Videos have a player that waits to be played', async () => {
  const page = await open(withMedia(media('videos', 'Ana/film.mp4')), { expect: gone });
  await openChat(page, 'Ana');
  const made = await page.evaluate(
    () => window.firstVideo ?? document.querySelector('video')?.autoplay ?? false,
  );
  assert.equal(made, false);
  await eventually(() => texts(page, '.media-video .absent'), [english.missingVideo]);
});

test('Documents are links with their name and ending', async () => {
  const report = media('documents', 'Ana/Report #3 <final>.pdf');
  const page = await open(withMedia(report, media('documents', 'Ana/noending')), {
    archive: { files: { [report.path]: 'x' } },
  });
  await openChat(page, 'Ana');
  const link = page.getByRole('link', { name: /Report/ });
  assert.equal(await link.getAttribute('href'), 'messages/Ana/Report%20%233%20%3Cfinal%3E.pdf');
  assert.equal(await link.getAttribute('rel'), 'noopener noreferrer');
  assert.deepEqual(await texts(page, '.document-name'), ['Report #3 <final>.pdf', 'noending']);
  assert.deepEqual(await texts(page, '.document-kind'), ['Document · PDF', 'Document']);
});

test('A document has the name that its sender gave it', async () => {
  const plan = media('documents', 'Ana/2024_plan.PDF');
  const page = await open(
    [
      {
        name: 'Ana',
        messages: [
          message('The plan.pdf\nOn page 2', { media: plan }),
          message('The plan.pdf', { media: plan }),
          message('It has no ending', { media: plan }),
          message('photo.pdf', { media: media('photos', 'Ana/b.pdf', { exported: false }) }),
          message('gone.pdf', { media: media('documents', 'Ana/c.pdf', { exported: false }) }),
        ],
      },
    ],
    { archive: { files: { [plan.path]: 'x' } } },
  );
  await openChat(page, 'Ana');
  assert.deepEqual(await texts(page, '.document-name'), ['The plan.pdf', 'The plan.pdf', '2024_plan.PDF']);
  assert.deepEqual(await texts(page, '.body'), ['On page 2', 'It has no ending', 'photo.pdf', 'gone.pdf']);
  assert.equal(await page.locator('.document').first().getAttribute('title'), '2024_plan.PDF');
  await page.getByRole('button', { name: english.searchInChat }).click();
  await page.locator('#thread-query').fill('plan');
  await eventually(() => texts(page, '.message mark'), ['plan', 'plan']);
});

test('Stickers stand without a bubble', async () => {
  const sticker = media('stickers', 'Ana/s.png');
  const page = await open(withMedia(sticker), { archive: { files: { [sticker.path]: plainPicture } } });
  await openChat(page, 'Ana');
  assert.equal(
    await page.locator('.bubble').evaluate((bubble) => getComputedStyle(bubble).backgroundColor),
    'rgba(0, 0, 0, 0)',
  );
});

test('A kind that nobody knows is shown as a document', async () => {
  const page = await open(
    withMedia(media('constructor', 'Ana/thing.bin'), { kind: 'holograms', exported: false }),
  );
  await openChat(page, 'Ana');
  assert.deepEqual(await texts(page, '.document-name'), ['thing.bin']);
  assert.deepEqual(await texts(page, '.absent'), [english.documentNotExported]);
});

test('A caption stands under its picture', async () => {
  const photo = media('photos', 'Ana/p.png');
  const page = await open([{ name: 'Ana', messages: [message('the sea', { media: photo })] }], {
    archive: { files: { [photo.path]: plainPicture } },
  });
  await openChat(page, 'Ana');
  const [picture, caption] = [
    await page.locator('.media-photo').boundingBox(),
    await page.locator('.body').boundingBox(),
  ];
  assert.ok(caption.y >= picture.y + picture.height);
});

test('Flying past a thousand videos and pictures loads only those where it stops', async () => {
  const messages = Array.from({ length: 2000 }, (_, index) =>
    message(undefined, {
      ts: someTime + index * 60,
      media: media(index % 2 ? 'videos' : 'photos', `Ana/${index}`),
    }),
  );
  const page = await open([{ name: 'Ana', messages }], { expect: gone });
  await openChat(page, 'Ana');
  await page.locator('#messages').evaluate(async (element) => {
    for (let step = 1; step <= 60; step++) {
      element.scrollTop = element.scrollHeight * (1 - step / 60);
      await new Promise((done) => requestAnimationFrame(done));
    }
  });
  await page.waitForTimeout(500);
  const loaded = new Set(page.requests.filter((url) => url.includes('/messages/Ana/')));
  assert.ok(loaded.size > 0 && loaded.size < 120, `${loaded.size} files were loaded`);
});
