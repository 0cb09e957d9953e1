// Data files are scripts that leave a global behind, because a page opened from disk
// may not read files any other way.

// Runs the data file `name` and takes what it left in window[global].
function loadData(name, global) {
  return new Promise((resolve, reject) => {
    const script = element("script", { src: BASE + "_viewer/data/" + name });
    script.addEventListener("load", () => {
      const payload = window[global];
      window[global] = null;
      script.remove();
      resolve(payload);
    });
    script.addEventListener("error", () => {
      script.remove();
      reject(new Error(name));
    });
    document.head.append(script);
  });
}

// Wraps a load so that each key is loaded once, however often and fast it is asked
// for. A failure is forgotten, so that the next request tries again.
function loadOnce(load) {
  const requests = new Map();
  return (key) => {
    if (!requests.has(key)) {
      const request = load(key);
      requests.set(key, request);
      request.catch(() => requests.delete(key));
    }
    return requests.get(key);
  };
}

const loadChat = loadOnce(async (id) => {
  const payload = await loadData("chat-" + encodePart(id) + ".js", "__CHAT_PAYLOAD");
  // A file that is cut or damaged leaves nothing behind.
  if (!isRecord(payload)) throw new Error("chat " + id);
  return Array.isArray(payload.messages) ? payload.messages.map(asMessage) : [];
});

// A block holds consecutive messages of one or more chats, a line for each.
const loadBlock = loadOnce(async (number) => {
  const payload = await loadData(BLOCKS[number].file, "__BLOCK_PAYLOAD");
  if (typeof payload !== "string") throw new Error("block " + number);
  return payload.split("\n");
});

// One entry per block: its `file`, and in `chats` its parts [chat id, first message, number of messages].
// Null when the archive has none, or lines that are not known.
const isBlock = (block) =>
  isRecord(block) && Array.isArray(block.chats) && block.chats.every((part) => Array.isArray(part));
const BLOCKS = LINE && Array.isArray(ARCHIVE.blocks) && ARCHIVE.blocks.every(isBlock) ? ARCHIVE.blocks : null;

const LARGE_CHAT = 5000;

// Where the blocks hold a chat: [{block, line, first, count}] in message order, or null
// unless they hold all of it.
function blockPartsOf(chat) {
  if (!BLOCKS) return null;
  const parts = [];
  let count = 0;
  BLOCKS.forEach((block, number) => {
    let line = 0;
    for (const [id, first, length] of block.chats) {
      if (id === chat.id && first === count) {
        parts.push({ block: number, line, first, count: length });
        count += length;
      }
      line += length;
    }
  });
  return parts.length && count === chat.count ? parts : null;
}
