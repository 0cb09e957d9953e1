// Starts Debian's Chromium, or the one that CHROMIUM names, without a window.
import { chromium } from 'playwright-core';

const flags = [
  '--headless',
  '--no-sandbox',
  '--disable-gpu',
  '--disable-quic',
  '--no-first-run',
  '--disable-background-networking',
  '--disable-component-update',
  '--disable-sync',
];

// `flags` and `options` add to what the tests start it with.
export const launch = ({ flags: more = [], ...options } = {}) =>
  chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: [...flags, ...more],
    ...options,
  });

export const wide = { width: 1280, height: 800 };
export const narrow = { width: 390, height: 780 };
