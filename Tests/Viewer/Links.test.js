import assert from 'node:assert/strict';
import { test } from 'node:test';
import { message } from './Support/index.js';
import { open, openChat } from './Support/viewer.js';

const linksOf = async (...lines) => {
  const page = await open([{ name: 'Ana', messages: [message(lines.join('\n'))] }]);
  await openChat(page, 'Ana');
  return page
    .locator('.body a')
    .evaluateAll((all) => all.map((link) => [link.textContent, link.getAttribute('href')]));
};

test('Web, mail and telephone addresses become links', async () => {
  assert.deepEqual(
    await linksOf(
      'see https://example.com/a?b=c#d',
      'or HTTP://EXAMPLE.ORG',
      'www.example.net/x',
      'write ana@example.com',
      'mailto:ben@example.com',
      'call +55 11 98765-4321',
      'tel:+441234567',
    ),
    [
      ['https://example.com/a?b=c#d', 'https://example.com/a?b=c#d'],
      ['HTTP://EXAMPLE.ORG', 'http://example.org/'],
      ['www.example.net/x', 'https://www.example.net/x'],
      ['ana@example.com', 'mailto:ana@example.com'],
      ['mailto:ben@example.com', 'mailto:ben@example.com'],
      ['+55 11 98765-4321', 'tel:+5511987654321'],
      ['tel:+441234567', 'tel:+441234567'],
    ],
  );
});

test('Punctuation around an address stays outside of it', async () => {
  assert.deepEqual(
    await linksOf(
      '(https://example.com/a).',
      'https://example.com/w_(x), yes',
      '“https://example.com/q”',
      'https://example.com!',
    ),
    [
      ['https://example.com/a', 'https://example.com/a'],
      ['https://example.com/w_(x)', 'https://example.com/w_(x)'],
      ['https://example.com/q', 'https://example.com/q'],
      ['https://example.com', 'https://example.com/'],
    ],
  );
});

test('Nothing else is ever a link', async () => {
  assert.deepEqual(
    await linksOf(
      'javascript:alert(1)',
      'data:text/html,x',
      'file:///etc/passwd',
      'ftp://example.com',
      'vbscript:x',
      'https://',
      'R$ 1.234,56 12:30 2024-06-01',
      'a@b',
    ),
    [],
  );
});

test('A long run of characters that might begin an address is looked through at once', async () => {
  const runs = ['a.', '1+', 'a@a.', 'a-'].map((piece) => piece.repeat(64_000 / piece.length));
  const started = Date.now();
  assert.deepEqual(await linksOf(...runs), []);
  assert.ok(Date.now() - started < 5000, `took ${Date.now() - started} ms`);
});

test('Links open beside the archive and tell nothing about it', async () => {
  const page = await open([{ name: 'Ana', messages: [message('https://example.com')] }]);
  await openChat(page, 'Ana');
  const link = page.getByRole('link', { name: 'https://example.com' });
  assert.equal(await link.getAttribute('target'), '_blank');
  assert.equal(await link.getAttribute('rel'), 'noopener noreferrer');
});

test('An address that never ends does not hold up the page', async () => {
  const started = performance.now();
  assert.equal(
    (await linksOf(`https://example.com/${')'.repeat(100_000)}`, 'a.'.repeat(20000), `${'1 '.repeat(20000)}`))
      .length,
    1,
  );
  assert.ok(performance.now() - started < 10_000);
});
