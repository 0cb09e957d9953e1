// The results of a search over all messages, newest first, growing while it runs.

const TYPING_PAUSE = 120;

class SearchView {
  // `open(chat, message)` shows a hit; with {replace} it is a step from the one that is shown. `leave` ends the search.
  constructor({ open, leave }) {
    this.open = open;
    this.host = byId("search-results");
    this.status = byId("search-status");
    this.hits = [];
    this.typed = null;
    this.query = parseQuery("");
    this.wanted = null;
    this.current = null;
    this.list = new Listbox(this.host, {
      row: (index) => hitRow(this.hits[index], this.query),
      height: 84,
      picked: (index) => open(this.hits[index].chat, idOfHit(this.hits[index])),
    });
    this.list.chosen = (index) => this.hits[index] === this.current;
    this.list.steerFrom(byId("search"));
    byId("previous-hit").addEventListener("click", () => this.step(-1));
    byId("next-hit").addEventListener("click", () => this.step(1));
    byId("leave-search").addEventListener("click", leave);
    this.look("");
  }

  // The hit that the route shows is marked in the list.
  follow({ mode, chat, message }) {
    this.wanted = mode === "messages" && chat && message ? { chat, message } : null;
    if (!this.current || !this.isWanted(this.current)) this.current = this.hits.find((hit) => this.isWanted(hit)) || null;
    this.list.remark();
    this.tellPosition();
  }

  isWanted(hit) {
    return this.wanted !== null && hit.chat.id === this.wanted.chat && idOfHit(hit) === this.wanted.message;
  }

  // One hit further down the list, or up with -1, round at the ends.
  step(by) {
    const count = this.hits.length;
    if (count === 0) return;
    const at = this.current ? (this.hits.indexOf(this.current) + by + count) % count : 0;
    this.list.activate(at);
    this.open(this.hits[at].chat, idOfHit(this.hits[at]), { replace: this.current !== null });
  }

  tellPosition() {
    show(this.current !== null, byId("found-bar"));
    if (!this.current) return;
    const n = this.hits.indexOf(this.current) + 1;
    byId("found-status").textContent = text("resultPosition", { n, total: this.hits.length });
  }

  // Searches for what is typed; `atOnce` when it comes from an address.
  look(typed, { atOnce = false } = {}) {
    const query = parseQuery(typed);
    if (typed.trim() === this.typed) return;
    this.typed = typed.trim();
    this.stop();
    const source = this.isWhole && query.narrows(this.query) ? this.hits : null;
    this.query = query;
    this.empty();
    if (query.isEmpty) this.status.textContent = text(this.typed === "" ? "searchHint" : "noMessagesFound");
    else if (query.isTooShort) this.status.textContent = text("searchMinChars");
    else {
      this.status.textContent = text("searching");
      this.waiting = setTimeout(() => this.begin(source), atOnce ? 0 : TYPING_PAUSE);
    }
  }

  // What a message is to be marked with; null where the words say too little.
  get marked() {
    return this.query.isTooShort ? null : this.query;
  }

  stop() {
    clearTimeout(this.waiting);
    if (this.search) this.search.stop();
    this.search = null;
    this.host.setAttribute("aria-busy", "false");
  }

  empty() {
    this.hits = [];
    this.isWhole = false;
    this.current = null;
    this.list.fill(0);
    this.tellPosition();
  }

  // Among the hits of a search that is narrowed, where there is one.
  begin(source) {
    this.host.setAttribute("aria-busy", "true");
    this.search = new Search(this.query, {
      found: (batch) => this.add(batch),
      finished: (failed) => this.end(failed),
    });
    if (source) this.search.runHits(source);
    else this.search.run();
  }

  add(batch) {
    const before = this.hits;
    this.hits = mergeByTime(before, batch.sort(newestFirst));
    this.current ||= batch.find((hit) => this.isWanted(hit)) || null;
    const after = this.hits;
    this.list.grow(after.length, (index) => Math.max(0, after.indexOf(before[index])));
    this.status.textContent = text("searching") + " " + text("resultCount", { n: after.length });
    this.tellPosition();
  }

  end(failed) {
    this.search = null;
    this.host.setAttribute("aria-busy", "false");
    this.isWhole = !failed;
    const count = this.hits.length ? text("resultCount", { n: this.hits.length }) : text("noMessagesFound");
    if (!failed) this.status.textContent = count;
    else this.status.textContent = text("searchFailed") + (this.hits.length ? " " + count : "");
  }
}

// A message's words; the name of its file where that was found, or what it is where there are no words.
function shownWords(message, query) {
  const words = message.text ? withNames(message) : "";
  const { media } = message;
  const name = (media && media.name) || "";
  if (name && rangesOf(words, query).length === 0 && rangesOf(name, query).length > 0) {
    return words ? words + " · " + name : name;
  }
  return words || (media ? text(kindOf(media).label) : "");
}

function newestFirst(one, other) {
  if (one.ts !== other.ts) return one.ts > other.ts ? -1 : 1;
  return other.index - one.index;
}

// Of hits of one moment, those found first stay first.
function mergeByTime(ordered, added) {
  const merged = [];
  let next = 0;
  for (const hit of ordered) {
    while (next < added.length && added[next].ts > hit.ts) merged.push(added[next++]);
    merged.push(hit);
  }
  while (next < added.length) merged.push(added[next++]);
  return merged;
}

function hitRow(hit, query) {
  const message = messageOfHit(hit);
  const sender = (message.me || hit.chat.group) && message.sender;
  return element(
    "div.hit",
    {},
    avatarOf(hit.chat),
    element(
      "span.chat-lines",
      {},
      element("span.chat-top", {}, element("span.chat-name", { dir: "auto" }, hit.chat.name || ""), listDate(message.ts)),
      element(
        "span.hit-words",
        {},
        tellingNumber(hit.chat),
        sender ? element("bdi.hit-sender", {}, ...marked(split(sender, query)), ": ") : null,
        element("bdi.snippet", {}, ...marked(snippetOf(shownWords(message, query), query))),
      ),
    ),
  );
}
