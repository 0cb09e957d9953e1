// Runs all tests, two files at a time, since most of their time is spent waiting.
import { readdirSync } from 'node:fs';
import { run } from 'node:test';
import { tap } from 'node:test/reporters';
import { fileURLToPath } from 'node:url';

const here = new URL('.', import.meta.url);
const files = readdirSync(here)
  .filter((name) => name.endsWith('.test.js'))
  .map((name) => fileURLToPath(new URL(name, here)));
if (files.length === 0) throw new Error('There are no tests.');

const results = run({ files, concurrency: 2 });
results.on('test:fail', () => (process.exitCode = 1));
results.compose(tap).pipe(process.stdout);
