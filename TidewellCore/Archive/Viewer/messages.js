// A chat's messages, in time order, wherever they come from. Both kinds answer
//   count, at(index) -> message or null while its data is under way, matches(index, query),
//   isPicture(index), isNotice(index), indexOfId(id) -> promise of an index or -1, and `ready`, a promise
//   kept when all of them are there.

const isPicture = (message) =>
  Boolean(message.media && message.media.exported && message.media.path) &&
  (message.media.kind === "photos" || message.media.kind === "stickers");

const isNotice = (message) => message.kind === "notice" && Boolean(message.text);

class LoadedMessages {
  constructor(messages) {
    this.messages = messages;
    this.count = messages.length;
    this.ready = Promise.resolve();
  }

  at(index) {
    return this.messages[index] || null;
  }

  async indexOfId(id) {
    return this.messages.findIndex((message) => message.id === id);
  }

  isPicture(index) {
    return isPicture(this.messages[index]);
  }

  isNotice(index) {
    return index >= 0 && index < this.count && isNotice(this.messages[index]);
  }

  matches(index, query) {
    return query.takes(this.messages[index]);
  }
}

// A large chat: lines of blocks that arrive newest first and are parsed when shown.
class BlockMessages {
  constructor(chatId, parts) {
    this.chatId = chatId;
    this.parts = parts;
    const last = parts.at(-1);
    this.count = last.first + last.count;
    this.lines = new Array(parts.length).fill(null);
    this.whenArrived = () => {};
    this.recent = new Map();
  }

  // Resolves when the newest messages are there; the older ones follow by themselves.
  async open() {
    await this.load(this.parts.length - 1);
    this.ready = this.loadRest();
    this.ready.catch(() => {});
  }

  async load(part) {
    if (this.lines[part]) return;
    const { first, count } = this.parts[part];
    const lines = await this.linesOf(this.parts[part]);
    if (this.lines[part]) return;
    this.lines[part] = lines;
    this.whenArrived(first, first + count);
  }

  // The chat file stands in for a block that is missing.
  async linesOf({ block, line, first, count }) {
    const lines = await loadBlock(block).catch(() => []);
    if (line === 0 && lines.length === count) return lines;
    if (lines.length >= line + count) return lines.slice(line, line + count);
    const messages = await loadChat(this.chatId);
    if (messages.length < first + count) throw new Error("block " + block);
    return messages.slice(first, first + count).map(lineOf);
  }

  async loadRest() {
    for (let part = this.parts.length - 2; part >= 0; part--) {
      await this.load(part);
      await nextTurn();
    }
  }

  partOf(index) {
    let low = 0;
    let high = this.parts.length - 1;
    while (low < high) {
      const middle = (low + high + 1) >> 1;
      if (this.parts[middle].first <= index) low = middle;
      else high = middle - 1;
    }
    return low;
  }

  lineAt(index) {
    const part = this.partOf(index);
    const lines = this.lines[part];
    if (!lines) {
      this.load(part).catch(() => {});
      return null;
    }
    return lines[index - this.parts[part].first];
  }

  at(index) {
    if (index < 0 || index >= this.count) return null;
    const known = this.recent.get(index);
    if (known) return known;
    const line = this.lineAt(index);
    if (line === null) return null;
    if (this.recent.size > 1000) this.recent.clear();
    const message = messageOfLine(line);
    this.recent.set(index, message);
    return message;
  }

  async indexOfId(id) {
    for (let part = this.parts.length - 1; part >= 0; part--) {
      await this.load(part);
      const at = this.lines[part].findIndex((line) => idOfLine(line) === id);
      if (at >= 0) return this.parts[part].first + at;
    }
    return -1;
  }

  isPicture(index) {
    const line = this.lineAt(index);
    return line !== null && mayHaveMedium(line) && isPicture(messageOfLine(line));
  }

  // What is still under way counts as none.
  isNotice(index) {
    if (index < 0 || index >= this.count) return false;
    const part = this.partOf(index);
    const line = this.lines[part] ? this.lines[part][index - this.parts[part].first] : "";
    return mayBeNotice(line) && isNotice(messageOfLine(line));
  }

  matches(index, query) {
    const line = this.lineAt(index);
    return line !== null && query.takesLine(line);
  }
}

// The first message of `day` or later, the last one when all are earlier. Undated
// messages stand first and count as earlier than any day.
function indexOfDay(messages, day) {
  let low = 0;
  let high = messages.count;
  while (low < high) {
    const middle = (low + high) >> 1;
    const message = messages.at(middle);
    if (message && (!hasTime(message.ts) || dayNumber(message.ts) < day)) low = middle + 1;
    else high = middle;
  }
  return Math.min(low, messages.count - 1);
}

const messagesOf = new Map();

// Opens a chat's messages; the same chat gives the same object again.
async function openMessages(chat) {
  const known = messagesOf.get(chat.id);
  if (known) return known;
  const opened = chat.count > LARGE_CHAT ? await openLarge(chat) : await openSmall(chat);
  if (!messagesOf.has(chat.id)) messagesOf.set(chat.id, opened);
  return messagesOf.get(chat.id);
}

async function openLarge(chat) {
  return (await openBlocks(chat)) || new LoadedMessages(await loadChat(chat.id));
}

// The blocks stand in for a chat file that is missing or damaged, when they have all of it.
async function openSmall(chat) {
  try {
    return new LoadedMessages(await loadChat(chat.id));
  } catch (error) {
    const opened = await openBlocks(chat);
    if (!opened) throw error;
    await opened.ready;
    return opened;
  }
}

// Null when the chat file is all there is to read.
async function openBlocks(chat) {
  const parts = blockPartsOf(chat);
  if (!parts) return null;
  const opened = new BlockMessages(chat.id, parts);
  try {
    await opened.open();
    return opened;
  } catch {
    return null;
  }
}
