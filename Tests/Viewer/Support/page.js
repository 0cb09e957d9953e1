// The viewer's page as the build makes it: the scripts joined in their order inside one
// function, the style sheets likewise, the template's values put in.
import { createHash } from 'node:crypto';
import { readFileSync } from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { english } from './strings.js';

const viewer = fileURLToPath(new URL('../../../TidewellCore/Archive/Viewer', import.meta.url));

export const readSource = (name) => readFileSync(path.join(viewer, name), 'utf8');

const parts = (ending) =>
  [...readSource('Sources.cmake').matchAll(/^\s+([\w-]+\.\w+)$/gm)].map(([, name]) => name).filter((name) => name.endsWith(ending));

export const styleSheet = () => parts('.css').map(readSource).join('\n');

export const script = () =>
  `(function () {\n"use strict";\nconst FALLBACK = ${JSON.stringify(english)};\n${parts('.js').map(readSource).join('\n')}\n})();\n`;

const escapeHTML = (value) =>
  value.replaceAll('&', '&amp;').replaceAll('<', '&lt;').replaceAll('>', '&gt;').replaceAll('"', '&quot;');

// `strings` holds a text for every name the template asks for.
export function page(strings, { base = 'messages/', assetPrefix = 'messages/_viewer/' } = {}) {
  const values = { ...strings, base, assetPrefix };
  const put = (template) =>
    template.replace(/\{\{(\w+)\}\}/g, (whole, name) => {
      if (name === 'scriptHash') return whole;
      if (!(name in values)) throw new Error(`The template asks for ${name}.`);
      return escapeHTML(values[name]);
    });
  const filled = put(readSource('index.html'));
  const [, inline] = /<script>([^]*?)<\/script>/.exec(filled);
  const hash = createHash('sha256').update(inline, 'utf8').digest('base64');
  return filled.replace('{{scriptHash}}', hash);
}
