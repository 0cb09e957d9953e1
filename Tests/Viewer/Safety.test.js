import assert from 'node:assert/strict';
import { test } from 'node:test';
import { message } from './Support/index.js';
import { open, openChat } from './Support/viewer.js';

const refused = /Content Security Policy|violates|ERR_BLOCKED|csp/i;

const attempts = {
  'a picture from the network': [
    'img-src',
    "document.body.append(Object.assign(new Image(), { src: 'https://192.0.2.1/x.png' }))",
  ],
  'a script from the network': [
    'script-src-elem',
    "document.head.append(Object.assign(document.createElement('script'), { src: 'https://192.0.2.1/x.js' }))",
  ],
  'a fetch': ['connect-src', "await fetch('https://192.0.2.1/')"],
  'a frame': [
    'frame-src',
    "document.body.append(Object.assign(document.createElement('iframe'), { src: 'https://192.0.2.1/' }))",
  ],
  'a video from the network': [
    'media-src',
    "document.body.append(Object.assign(document.createElement('video'), { src: 'https://192.0.2.1/x.mp4' }))",
  ],
  'an inline script': [
    'script-src-elem',
    "const s = document.createElement('script'); s.textContent = 'window.ran = 1'; document.body.append(s)",
  ],
  'an inline handler': [
    'script-src-attr',
    "document.body.insertAdjacentHTML('beforeend', '<i onclick=\"window.ran = 1\"></i>'); document.body.lastChild.click()",
  ],
};

for (const [what, [directive, attempt]] of Object.entries(attempts)) {
  test(`The page refuses ${what}`, async () => {
    const page = await open([{ name: 'Ana', messages: [message('x')] }], { expect: refused });
    // Evaluated by the browser's own hand, so that the attempt itself is not what is refused.
    const directives = await page.evaluate(`(async () => {
      const directives = [];
      addEventListener('securitypolicyviolation', (event) => directives.push(event.effectiveDirective));
      try { ${attempt} } catch {}
      await new Promise((resolve) => setTimeout(resolve, 150));
      return directives;
    })()`);
    assert.deepEqual(directives, [directive]);
    assert.equal(await page.evaluate(() => window.ran), undefined);
    assert.deepEqual(
      page.requests.filter((url) => !url.startsWith('file:') && !url.includes('192.0.2.1')),
      [],
    );
  });
}

test('Reading an archive asks for local files alone', async () => {
  const page = await open([{ name: 'Ana', messages: [message('https://example.com/picture.png')] }]);
  await openChat(page, 'Ana');
  await page.waitForTimeout(200);
  assert.ok(page.requests.length > 3);
  assert.deepEqual(
    page.requests.filter((url) => !url.startsWith('file:')),
    [],
  );
});
