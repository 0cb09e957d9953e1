export * from './archive.js';
export * from './files.js';
export * from './strings.js';
