// The page's texts, as an archive brings them and as the script falls back to them.
import { readFileSync } from 'node:fs';

const tables = new URL('../../../TidewellCore/Texts/', import.meta.url);
const pageIn = (language) => JSON.parse(readFileSync(new URL(`${language}.json`, tables), 'utf8')).page;

export const english = pageIn('en');
export const portuguese = pageIn('pt-BR');
