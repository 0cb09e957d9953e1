// What the archive brings. Its texts are in its language; FALLBACK, the English ones that
// the build puts before this file (cmake/EmbedViewer.cmake), stands in for what it lacks.

// The data may be damaged: what is of another type than it should be counts as absent.
const isRecord = (value) => typeof value === "object" && value !== null && !Array.isArray(value);

function withTexts(record, ...names) {
  for (const name of names) if (typeof record[name] !== "string") delete record[name];
  return record;
}

function asMessage(value) {
  const message = withTexts(isRecord(value) ? value : {}, "kind", "sender", "text");
  if (isRecord(message.media)) withTexts(message.media, "kind", "name", "path");
  else delete message.media;
  return message;
}

const ARCHIVE = isRecord(window.ARCHIVE) ? window.ARCHIVE : {};
const CHATS = (Array.isArray(window.CHATS) ? window.CHATS : [])
  .filter((chat) => isRecord(chat) && typeof chat.id === "string")
  .map((chat) => withTexts(chat, "name", "preview", "avatar", "folder"));
const STRINGS = isRecord(ARCHIVE.strings) ? ARCHIVE.strings : {};

// Ends with "/" unless it is empty; every path in the data is relative to it.
const BASE = (() => {
  const base = window.ARCHIVE_BASE || ARCHIVE.base || "";
  return base === "" || base.endsWith("/") ? base : base + "/";
})();

// The archive's text, with {name} replaced by the values given; numbers are grouped
// as the language does.
function text(key, values = {}) {
  const own = Object.hasOwn(STRINGS, key) ? STRINGS[key] : undefined;
  const template = typeof own === "string" ? own : FALLBACK[key];
  return template.replace(/\{(\w+)\}/g, (whole, name) =>
    Object.hasOwn(values, name) ? formatNumber(values[name]) : whole,
  );
}
