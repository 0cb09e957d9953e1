import assert from 'node:assert/strict';
import { test } from 'node:test';
import { message, mine, portuguese } from './Support/index.js';
import * as kinds from './Support/kinds.js';
import { eventually, open, openChat, texts } from './Support/viewer.js';

const opened = async (messages, options) => {
  const page = await open([{ name: 'Club', group: true, messages }], options);
  await openChat(page, 'Club');
  return page;
};
const hrefs = (locator) => locator.evaluateAll((all) => all.map((link) => link.getAttribute('href')));
const asksTheNetwork = (page) => page.requests.filter((url) => !url.startsWith('file:'));

test('A place shows its name, address and coordinates, and a map behind a click', async () => {
  const page = await opened([kinds.place()]);
  assert.equal(await page.locator('.place .card-title').textContent(), 'Blue Cafe');
  assert.deepEqual(await texts(page, '.place .card-more'), ['12 Main St', '35.638504, -78.876053']);
  const link = page.getByRole('link', { name: 'Open map' });
  assert.deepEqual(await hrefs(link), [
    'https://www.openstreetmap.org/?mlat=35.638504&mlon=-78.876053#map=16/35.638504/-78.876053',
  ]);
  assert.equal(await link.getAttribute('target'), '_blank');
  assert.equal(await link.getAttribute('rel'), 'noreferrer noopener');
  assert.equal(await page.locator('.body').count(), 0);
  assert.deepEqual(asksTheNetwork(page), []);
});

test('A live place says so, and one without coordinates has no map', async () => {
  const page = await opened([
    kinds.place({ name: undefined, address: undefined, live: true }),
    kinds.place({ lat: undefined }),
  ]);
  assert.deepEqual(await texts(page, '.place .card-title'), ['Live location', 'Blue Cafe']);
  assert.equal(await page.getByRole('link', { name: 'Open map' }).count(), 1);
});

test('Coordinates that are none make no link', async () => {
  const wrong = [[91, 0], [0, 181], ['1', '2'], [null, 0], [0, '0"><script>']];
  const page = await opened([
    ...wrong.map(([lat, lon]) => kinds.place({ lat, lon })),
    kinds.place({ lat: -0, lon: 1e-9 }),
    kinds.place({ lat: -90, lon: 179.5 }),
  ]);
  assert.equal(await page.locator('.place').count(), 7);
  assert.deepEqual(await hrefs(page.locator('.place a')), [
    'https://www.openstreetmap.org/?mlat=0&mlon=0#map=16/0/0',
    'https://www.openstreetmap.org/?mlat=-90&mlon=179.5#map=16/-90/179.5',
  ]);
});

test('Every contact has a card with numbers and addresses to call and write to', async () => {
  const page = await opened([
    kinds.contacts(
      { name: 'Carla', phones: ['+1 (555) 000-0009', '117'], emails: ['carla@example.com'] },
      { name: 'Eve', phones: ['javascript:alert(1)', '1;2'], emails: ['a@b', 'x@example.com?bcc=y@example.com'] },
    ),
  ]);
  assert.deepEqual(await texts(page, '.contact .card-title'), ['Carla', 'Eve']);
  assert.equal((await texts(page, '.card-way')).length, 7);
  assert.deepEqual(await hrefs(page.locator('a.card-way')), ['tel:+15550000009', 'tel:117', 'mailto:carla@example.com']);
  assert.equal(await page.locator('.card-way').first().evaluate((one) => getComputedStyle(one).userSelect), 'auto');
});

test('A poll shows its question, and bars, counts and voters of its options', async () => {
  const page = await opened([kinds.poll()]);
  assert.equal(await page.locator('.poll .card-title').textContent(), 'Which day?');
  assert.deepEqual(await texts(page, '.poll-words'), ['Monday', 'Friday', 'Never']);
  assert.deepEqual(await texts(page, '.poll-count'), ['2', '1', '0']);
  assert.deepEqual(await texts(page, '.poll-names'), ['You, Ben', 'Carla']);
  assert.equal(await page.locator('.poll-votes').textContent(), 'Votes: 3');
  const widths = await page.locator('.poll-part').evaluateAll((all) => all.map((part) => Math.round((part.offsetWidth / part.parentElement.offsetWidth) * 3)));
  assert.deepEqual(widths, [2, 1, 0]);
  assert.equal(await page.getByRole('listitem').filter({ hasText: 'Monday' }).getAttribute('title'), 'You, Ben');
});

test('A call says what it was; a missed one has the colour of warnings', async () => {
  const page = await opened([
    kinds.call('Voice call, 1:35', { missed: false, seconds: 95, video: false }),
    kinds.call('Missed video call', { missed: true, video: true }),
  ]);
  assert.deepEqual(await texts(page, '.call-words'), ['Voice call, 1:35', 'Missed video call']);
  const colours = await page.locator('.call-words').evaluateAll((all) => all.map((one) => getComputedStyle(one).color));
  assert.notEqual(colours[0], colours[1]);
});

test('What was deleted, has not arrived or is not supported is quiet', async () => {
  const words = { deleted: 'This message was deleted', waiting: 'Waiting for this message', unsupported: 'Unsupported message (type 91)' };
  const page = await opened(Object.entries(words).map(([kind, text]) => kinds.quiet(kind, text)));
  assert.deepEqual(await texts(page, '.quiet-line'), Object.values(words));
  const styles = await page.locator('.quiet-line').evaluateAll((all) => all.map((one) => getComputedStyle(one).fontStyle));
  assert.deepEqual(styles, ['italic', 'italic', 'italic']);
});

test('A medium that the backup lacks has a frame that says what it was, and keeps its caption', async () => {
  const page = await opened([
    kinds.missing('photo', 'Photo (not in the backup)'),
    kinds.missing('voiceMessage', 'Voice message, 0:07 (not in the backup)', { seconds: 7 }),
    kinds.missing('document', 'Document: a.pdf (not in the backup)', { name: 'a.pdf' }),
    kinds.missing('video', 'The whole evening', { caption: 'The whole evening', seconds: 3723 }),
  ]);
  assert.deepEqual(await texts(page, '.missing-part'), ['Photo', 'Voice message, 0:07', 'Document', 'Video, 1:02:03']);
  assert.deepEqual(await texts(page, '.missing .card-more'), [
    'Not in the backup',
    'Not in the backup',
    'a.pdf',
    'Not in the backup',
    'Not in the backup',
  ]);
  assert.deepEqual(await texts(page, '.body'), ['The whole evening']);
});

test('An invitation and a product are cards, captions stand below', async () => {
  const page = await opened([kinds.invite(), kinds.product()]);
  assert.deepEqual(await texts(page, '.card-title'), ['Garden', 'A lamp']);
  assert.equal(await page.locator('.card-price').textContent(), 'EUR 19.99');
  assert.deepEqual(await texts(page, '.body'), ['Come in!']);
  assert.deepEqual(await texts(page, '.product .card-more'), ['Bright and small']);
});

test('The buttons of a business’s text are links only where that is safe', async () => {
  const page = await opened([kinds.business()]);
  assert.match(await page.locator('.business .body').innerText(), /^Your order is .*\nThank you$/);
  assert.deepEqual(await texts(page, '.business-button'), ['Track', 'Call us', 'Not this', 'Stop']);
  assert.deepEqual(await hrefs(page.locator('a.business-button')), ['https://example.com/track?id=1', 'tel:+15550000009']);
});

test('An address that the text does not tell stands under it by its host', async () => {
  const alone = (url) => kinds.linked({ title: undefined, summary: undefined, url });
  const page = await opened([alone('https://shop.example/ad'), alone('https://example.com/page'), alone('')]);
  assert.deepEqual(await texts(page, '.preview'), ['shop.example']);
  assert.deepEqual(await hrefs(page.locator('a.preview')), ['https://shop.example/ad']);
});

test('A link’s title, summary and host stand under the text and lead there', async () => {
  const page = await opened([kinds.linked(), kinds.linked({ url: '' }), kinds.linked({ url: 'javascript:alert(1)' })]);
  assert.deepEqual(await texts(page, '.preview-title'), Array(3).fill('An example page'));
  assert.deepEqual(await texts(page, '.preview-host'), ['example.com', 'example.com']);
  assert.deepEqual(await hrefs(page.locator('a.preview')), ['https://example.com/page', 'https://example.com/page']);
  assert.equal(await page.locator('a.preview').first().getAttribute('rel'), 'noreferrer noopener');
  assert.deepEqual(await texts(page, '.body'), Array(3).fill('look: https://example.com/page'));
});

test('Facts that are damaged leave the words', async () => {
  const damaged = ['place', 'contacts', 'poll', 'missing', 'product'].flatMap((kind) =>
    [null, [], 'x', { people: 'x', options: [3, { words: 4 }], lat: {}, part: 'constructor', title: 5 }].map((info) =>
      message(`the words of a ${kind}`, { kind, info }),
    ),
  );
  const page = await opened(damaged, { viewport: { width: 1200, height: 3000 } });
  assert.equal((await texts(page, '.body')).length, damaged.length);
  const others = ['invite', 'business', 'call', 'deleted'].map((kind) => message('words', { kind, info: 7 }));
  const page2 = await opened(others);
  assert.equal(await page2.locator('.bubble').filter({ hasText: 'words' }).count(), 4);
});

test('Markup in facts stays text', async () => {
  const evil = '<img src=x onerror="window.ran = 1">';
  const page = await opened(
    [
      kinds.place({ name: evil, address: evil }),
      kinds.contacts({ name: evil, phones: [evil], emails: [evil] }),
      kinds.poll({ question: evil, options: [{ words: evil, names: [evil] }] }),
      kinds.missing('document', evil, { name: evil }),
      kinds.linked({ title: evil, summary: evil, url: evil }),
    ],
    { viewport: { width: 1200, height: 2000 } },
  );
  assert.equal(await page.evaluate(() => window.ran), undefined);
  assert.equal(await page.locator('.message img').count(), 0);
  assert.equal(await page.locator('.place .card-title').textContent(), evil);
});

test('A search finds what the kinds say, and marks it where it is shown', async () => {
  const messages = [kinds.poll(), kinds.contacts({ name: 'Carla Souza', phones: [], emails: [] }), kinds.place()];
  const wanted = { friday: '.poll mark', souza: '.contact mark', 'main st': '.place mark' };
  for (const [query, mark] of Object.entries(wanted)) {
    const page = await open([{ name: 'Club', group: true, messages }], { hash: `#mode=messages&q=${query.replace(' ', '+')}` });
    await page.locator('.hit').first().click();
    await page.locator('.message.target').waitFor();
    assert.equal(await page.locator('.hit').count(), 1);
    await page.getByRole('button', { name: 'Search in this chat' }).click();
    await page.locator('#thread-query').fill(query);
    await eventually(async () => (await texts(page, mark)).map((one) => one.toLowerCase()), [query]);
  }
});

test('A Portuguese archive names the facts in Portuguese', async () => {
  const page = await opened([kinds.place(), kinds.poll(), mine('Foto (não está no backup)', { kind: 'missing', info: { part: 'photo' } })], {
    archive: { strings: portuguese },
  });
  assert.equal(await page.getByRole('link', { name: 'Abrir mapa' }).count(), 1);
  assert.equal(await page.locator('.poll-votes').textContent(), 'Votos: 3');
  assert.deepEqual(await texts(page, '.missing .card-more'), ['Não está no backup']);
});
