// The page's own words. An archive brings them in its language; these stand in for
// whatever it lacks.
const FALLBACK = {
  language: "en",
  title: "Chat Archive",
  chats: "Chats",
  messages: "Messages",
  search: "Search",
  filterChats: "Filter chats",
  searchMessages: "Search all messages",
  searchHint: "Type to search message text across chats.",
  searchMinChars: "Enter at least two characters.",
  searching: "Searching…",
  noMessagesFound: "No messages found.",
  searchFailed: "Search failed.",
  back: "Back",
  close: "Close",
  selectChat: "Select a chat",
  group: "Group",
  groupCount: "Group · {n} messages",
  messageCount: "{n} messages",
  noChatsMatch: "No chats match.",
  noChats: "No chats in this archive.",
  noMessages: "No messages in this chat.",
  couldNotOpen: "Could not open this chat.",
  couldNotLoad: "Could not load chat",
  photo: "Photo",
  video: "Video",
  voiceNote: "Voice note",
  sticker: "Sticker",
  document: "Document",
  downloadAudio: "Download audio",
  photoNotExported: "[photo not exported]",
  videoNotExported: "[video not exported]",
  stickerNotExported: "[sticker not exported]",
  voiceNoteNotExported: "[voice note not exported]",
  documentNotExported: "[document not exported]",
  missingImage: "[missing image]",
  missingVideo: "[missing video]",
  missingVoiceNote: "[missing voice note]",
  missingSticker: "[missing sticker]",
  missingFile: "[missing file]",
  jumpToDate: "Jump to date",
  searchInChat: "Search in this chat",
  previous: "Previous",
  next: "Next",
  newestMessages: "Newest messages",
  resultCount: "Results: {n}",
  resultPosition: "{n} of {total}",
  emptyMessage: "Message without text",
  undated: "Undated",
  loading: "Loading…",
  clear: "Clear",
  openOriginal: "Open file",
};

// The data may be damaged: what is of another type than it should be counts as absent.
const isRecord = (value) => typeof value === "object" && value !== null && !Array.isArray(value);

function withTexts(record, ...names) {
  for (const name of names) if (typeof record[name] !== "string") delete record[name];
  return record;
}

function asMessage(value) {
  const message = withTexts(isRecord(value) ? value : {}, "sender", "text");
  if (isRecord(message.media)) withTexts(message.media, "kind", "name", "path");
  else delete message.media;
  return message;
}

const ARCHIVE = isRecord(window.ARCHIVE) ? window.ARCHIVE : {};
const CHATS = (Array.isArray(window.CHATS) ? window.CHATS : [])
  .filter((chat) => isRecord(chat) && typeof chat.id === "string")
  .map((chat) => withTexts(chat, "name", "preview", "avatar"));
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
