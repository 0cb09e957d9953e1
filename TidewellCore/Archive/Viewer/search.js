// Search over all messages, as they are read. Blocks (or, without them, chat files) are gone
// through one after another; hits {chat, index, ts, message or line} are handed on in
// batches as they are found.

// How long the page may be busy at a time, and how often hits are shown, in milliseconds.
const SEARCH_SLICE = 12;
const FIRST_BATCH = 60;
const NEXT_BATCH = 220;

class Search {
  // `found(hits)` gets every new batch, `finished(failed)` the end.
  constructor(query, { found, finished }) {
    this.query = query;
    this.found = found;
    this.finished = finished;
    this.batch = [];
    this.stopped = false;
    this.failed = false;
  }

  stop() {
    this.stopped = true;
  }

  async run() {
    this.handedOn = performance.now() - NEXT_BATCH + FIRST_BATCH;
    if (BLOCKS) await this.runBlocks();
    else await this.runChats(CHATS.filter((chat) => chat.count > 0 && this.query.takesChat(chat)));
    if (this.stopped) return;
    this.handOn();
    this.finished(this.failed);
  }

  // The same among hits that are known.
  async runHits(hits) {
    this.handedOn = performance.now() - NEXT_BATCH + FIRST_BATCH;
    for (let at = 0; at < hits.length && !this.stopped; at++) {
      const { line, message } = hits[at];
      if (message ? this.query.takes(message) : this.query.takesLine(line)) this.batch.push(hits[at]);
      if (at % 2000 === 1999) await this.pause();
    }
    if (this.stopped) return;
    this.handOn();
    this.finished(false);
  }

  // The next file is under way while the one before it is gone through.
  async runEach(jobs, load, goThrough) {
    let ahead = jobs.length ? load(jobs[0]) : null;
    for (let at = 0; at < jobs.length && !this.stopped; at++) {
      const loading = ahead;
      ahead = at + 1 < jobs.length ? load(jobs[at + 1]) : null;
      if (ahead) ahead.catch(() => {});
      try {
        const loaded = await loading;
        if (!this.stopped) await goThrough(loaded, jobs[at]);
      } catch {
        this.failed = true;
      }
    }
  }

  // Of a block that is missing, its part of each chat is looked for in the chat file.
  async runBlocks() {
    const missing = new Map();
    const load = (number) =>
      loadBlock(number).catch(() => {
        for (const [id, first, count] of BLOCKS[number].chats) {
          missing.set(id, [...(missing.get(id) || []), [first, first + count]]);
        }
        return [];
      });
    await this.runEach([...BLOCKS.keys()], load, (lines, number) => this.goThroughBlock(lines, number));
    if (missing.size === 0 || this.stopped) return;
    await this.runChats(
      CHATS.filter((chat) => missing.has(chat.id) && this.query.takesChat(chat)),
      (chat, index) => missing.get(chat.id).some(([first, end]) => index >= first && index < end),
    );
  }

  async runChats(chats, wanted = () => true) {
    const load = (chat) => loadChat(chat.id);
    await this.runEach(chats, load, (messages, chat) => this.goThroughChat(messages, chat, wanted));
  }

  async goThroughBlock(lines, number) {
    let line = 0;
    for (const [id, first, count] of BLOCKS[number].chats) {
      const chat = chatById(id);
      const end = chat && this.query.takesChat(chat) ? Math.min(line + count, lines.length) : 0;
      for (let at = line; at < end; at++) {
        if (this.query.takesLine(lines[at])) {
          this.batch.push({ chat, index: first + at - line, ts: timeOfLine(lines[at]), line: lines[at] });
        }
      }
      line += count;
    }
    await this.pause();
  }

  async goThroughChat(messages, chat, wanted) {
    for (let index = 0; index < messages.length && !this.stopped; index++) {
      const message = messages[index];
      if (this.query.takes(message) && wanted(chat, index)) {
        this.batch.push({ chat, index, ts: hasTime(message.ts) ? message.ts : -Infinity, message });
      }
      if (index % 2000 === 1999) await this.pause();
    }
    await this.pause();
  }

  // Lets the page breathe, and hands on what there is when it is time.
  async pause() {
    const now = performance.now();
    if (now - this.handedOn > NEXT_BATCH && this.batch.length) this.handOn();
    if (now - (this.breathed || 0) < SEARCH_SLICE) return;
    await nextTurn();
    this.breathed = performance.now();
  }

  handOn() {
    if (this.stopped || this.batch.length === 0) return;
    this.handedOn = performance.now();
    const batch = this.batch;
    this.batch = [];
    this.found(batch);
  }
}

function idOfHit(hit) {
  return hit.message ? hit.message.id : idOfLine(hit.line);
}

function messageOfHit(hit) {
  return hit.message || messageOfLine(hit.line);
}
