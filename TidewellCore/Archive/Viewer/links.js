// Addresses in message text that may be clicked: http, https, mailto and tel alone. The
// part before an @ has 64 characters at most (RFC 5321, 4.5.3.1.1), without which a long
// run of such characters would be gone through again from each of them.

const ADDRESS = new RegExp(
  [
    String.raw`(?<![\p{L}\p{N}])(?:https?:\/\/|www\.)[^\s<>"\u201c\u201d]+`,
    String.raw`\b(?:mailto:)?[\w.+-]{1,64}@[\p{L}\p{N}-]+(?:\.[\p{L}\p{N}-]+)*\.\p{L}{2,}`,
    String.raw`\btel:\+?[\d().-]{3,}`,
    String.raw`(?<![\p{L}\p{N}+])\+\d(?:[ ().-]?\d){7,14}(?![\p{L}\p{N}])`,
  ].join("|"),
  "giu",
);
const LONGEST_ADDRESS = 4096;
const SAFE = new Set(["http:", "https:", "mailto:", "tel:"]);

// `string` cut into {string, href}; `href` is absent for plain text.
function cutAtLinks(string) {
  const parts = [];
  let at = 0;
  for (const found of string.matchAll(ADDRESS)) {
    const address = withoutClosing(found[0]);
    const href = hrefOf(address);
    if (!href) continue;
    if (found.index > at) parts.push({ string: string.slice(at, found.index) });
    parts.push({ string: address, href });
    at = found.index + address.length;
  }
  if (at < string.length) parts.push({ string: string.slice(at) });
  return parts;
}

const OPENING = { ")": "(", "]": "[", "}": "{" };

// Punctuation after an address belongs to the sentence, a bracket only when it was
// opened before the address.
function withoutClosing(address) {
  const surplus = {};
  for (const [closing, opening] of Object.entries(OPENING)) {
    surplus[closing] = address.split(closing).length - address.split(opening).length;
  }
  let end = address.length;
  for (; end > 0; end--) {
    const last = address[end - 1];
    if (surplus[last] > 0) surplus[last]--;
    else if (!/[.,;:!?'’…*_~]/.test(last)) break;
  }
  return address.slice(0, end);
}

function hrefOf(address) {
  let href = address;
  if (/^www\./i.test(address)) href = "https://" + address;
  else if (/^\+/.test(address)) href = "tel:" + address.replace(/[^+\d]/g, "");
  else if (!/^[a-z]+:/i.test(address)) href = "mailto:" + address;
  try {
    const url = new URL(href);
    return SAFE.has(url.protocol) && (url.host || !url.protocol.startsWith("http")) ? url.href : null;
  } catch {
    return null;
  }
}

const EMAIL = /^[\w.+-]{1,64}@[\p{L}\p{N}-]{1,63}(?:\.[\p{L}\p{N}-]{1,63}){0,8}\.\p{L}{2,24}$/u;
const PHONE = /^\+?[\d ().\/-]{3,32}$/;

// What somebody's data gives as an address or a number, as a link of one of these
// `protocols`; null for everything else.
function safeAddress(string, protocols) {
  const wanted = string.trim();
  if (wanted.length > LONGEST_ADDRESS) return null;
  let href = wanted;
  if (PHONE.test(wanted)) href = "tel:" + wanted.replace(/[^+\d]/g, "");
  else if (EMAIL.test(wanted)) href = "mailto:" + wanted;
  else if (/^www\./i.test(wanted)) href = "https://" + wanted;
  try {
    const url = new URL(href);
    return protocols.includes(url.protocol) && (url.host || !url.protocol.startsWith("http")) ? url.href : null;
  } catch {
    return null;
  }
}
