// Writes archives for the viewer to open, in folders whose names are awkward on purpose.
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { page, script, styleSheet } from './page.js';
import { english } from './strings.js';

// 2024-06-01 09:00:00 in UTC.
export const someTime = Date.UTC(2024, 5, 1, 9) / 1000;

const sorted = (value) => {
  if (Array.isArray(value)) return value.map(sorted);
  if (value === null || typeof value !== 'object') return value;
  const known = Object.entries(value).filter(([, member]) => member !== undefined);
  return Object.fromEntries(
    known.sort(([one], [other]) => (one < other ? -1 : 1)).map(([key, member]) => [key, sorted(member)]),
  );
};

const stringify = (value) =>
  JSON.stringify(sorted(value))
    .replaceAll('<', '\\u003c')
    .replaceAll('\u2028', '\\u2028')
    .replaceAll('\u2029', '\\u2029');

const assignment = (name, value) => `window.${name} = ${stringify(value)};\n`;

let nextId = 1000;

// A message: text, and whatever else differs from one that Ana sent.
export const message = (text, more = {}) => ({
  id: String(nextId++),
  me: false,
  sender: 'Ana',
  text,
  ts: someTime,
  ...more,
});

export const mine = (text, more = {}) => message(text, { me: true, sender: 'You', ...more });

// What WhatsApp itself tells; it has no sender.
export const notice = (text, more = {}) =>
  message(text, { kind: 'notice', info: { code: 2, type: 'encryption' }, sender: '', ...more });

export const media = (kind, mediaPath, more = {}) => ({
  kind,
  exported: true,
  path: mediaPath,
  name: mediaPath.split('/').at(-1),
  ...more,
});

// `count` messages a minute apart, the texts made by text(index).
export const many = (count, text = (index) => `message ${index}`, more = () => ({})) =>
  Array.from({ length: count }, (_, index) =>
    message(text(index), { ts: someTime + index * 60, ...more(index) }),
  );

const summary = ({ messages, ...chat }) => ({
  folder: chat.name,
  group: false,
  id: chat.name,
  jid: `${chat.name}@s.whatsapp.net`,
  preview: messages.at(-1)?.text ?? '',
  count: messages.length,
  file: `chat-${chat.id ?? chat.name}.js`,
  lastTs: messages.at(-1)?.ts,
  ...chat,
});

const column = (value) => (value === undefined ? '' : stringify(value));

// A message as it stands in a block, by the archive's format; the first had no number,
// the last one is still to come.
const lineForms = new Map([
  [null, stringify],
  [2, ({ id, ts, text, ...others }) => [...[id, ts, text].map(column), stringify(others)].join('\t')],
  [3, () => 'something else'],
]);

// Cuts all messages into blocks of `size` lines, as the archive's writer does by bytes.
function blocksOf(chats, size, lineOf) {
  const blocks = [{ parts: [], lines: [] }];
  for (const chat of chats) {
    chat.messages.forEach((one, index) => {
      if (blocks.at(-1).lines.length === size) blocks.push({ parts: [], lines: [] });
      const { parts, lines } = blocks.at(-1);
      if (parts.at(-1)?.[0] === chat.id) parts.at(-1)[2]++;
      else parts.push([chat.id, index, 1]);
      lines.push(lineOf(one).replaceAll('`', '\\u0060').replaceAll('$', '\\u0024'));
    });
  }
  return blocks;
}

// Options: `strings`, `timeZone`, `region`, `title`; `blockSize` (lines; 0 for no blocks at all) and
// `format`, by which their lines are written (null for none); `files` {path relative to the messages folder: bytes}.
export function makeArchive(
  chats,
  { strings = {}, timeZone = 'UTC', region, title, blockSize = 1000, format = 2, files = {} } = {},
) {
  const folder = path.join(mkdtempSync(path.join(tmpdir(), 'tidewell-viewer-')), 'My chats #1 (100% kept)');
  const content = path.join(folder, 'messages');
  const write = (name, bytes) => {
    mkdirSync(path.dirname(path.join(folder, name)), { recursive: true });
    writeFileSync(path.join(folder, name), bytes);
  };
  const data = (name, ...assignments) => write(`messages/_viewer/data/${name}`, assignments.join(''));

  const listed = chats.map((chat) => ({ id: chat.name, messages: [], ...chat }));
  const archive = { format: format ?? undefined, strings, timeZone, region, title: title ?? strings.title ?? english.title };
  if (blockSize) {
    const hasMessages = listed.some((chat) => chat.messages.length);
    const blocks = hasMessages ? blocksOf(listed, blockSize, lineForms.get(format)) : [];
    archive.blocks = blocks.map(({ parts }, number) => ({ file: `block-${number}.js`, chats: parts }));
    blocks.forEach(({ lines }, number) =>
      data(`block-${number}.js`, `window.__BLOCK_PAYLOAD = String.raw\`${lines.join('\n')}\`;\n`),
    );
  }
  write('index.html', page({ ...english, ...strings }));
  write('messages/_viewer/app.css', styleSheet());
  write('messages/_viewer/app.js', script());
  data('chats.js', assignment('ARCHIVE', archive), assignment('CHATS', listed.map(summary)));
  for (const chat of listed)
    data(`chat-${chat.id}.js`, assignment('__CHAT_PAYLOAD', { messages: chat.messages }));
  for (const [name, bytes] of Object.entries(files)) write(`messages/${name}`, bytes);

  return {
    folder,
    content,
    url: pathToFileURL(path.join(folder, 'index.html')).href,
    write,
    removeFile: (name) => rmSync(path.join(folder, name)),
    remove: () => rmSync(path.dirname(folder), { recursive: true, force: true }),
  };
}
