// The results of a search over all messages, newest first, growing while it runs.

const SEARCH_MINIMUM = 2;
const TYPING_PAUSE = 120;

class SearchView {
  // `open(chat, message)` shows a hit; with {replace} it is a step from the one that is shown. `leave` ends the search.
  constructor({ open, leave }) {
    this.open = open;
    this.host = byId("search-results");
    this.status = byId("search-status");
    this.hits = [];
    this.typed = null;
    this.query = "";
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
    const query = typed.trim().toLowerCase();
    if (query === this.typed) return;
    this.typed = query;
    this.stop();
    this.query = foldQuery(query);
    this.empty();
    if (query === "") this.status.textContent = text("searchHint");
    else if ([...query].length < SEARCH_MINIMUM) this.status.textContent = text("searchMinChars");
    else if (this.query === "") this.status.textContent = text("noMessagesFound");
    else {
      this.status.textContent = text("searching");
      this.waiting = setTimeout(() => this.begin(), atOnce ? 0 : TYPING_PAUSE);
    }
  }

  stop() {
    clearTimeout(this.waiting);
    if (this.search) this.search.stop();
    this.search = null;
    this.host.setAttribute("aria-busy", "false");
  }

  empty() {
    this.hits = [];
    this.current = null;
    this.list.fill(0);
    this.tellPosition();
  }

  begin() {
    this.host.setAttribute("aria-busy", "true");
    this.search = new Search(this.query, {
      found: (batch) => this.add(batch),
      finished: (failed) => this.end(failed),
    });
    this.search.run();
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
    const count = this.hits.length ? text("resultCount", { n: this.hits.length }) : text("noMessagesFound");
    if (!failed) this.status.textContent = count;
    else this.status.textContent = text("searchFailed") + (this.hits.length ? " " + count : "");
  }
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
        sender ? element("bdi.hit-sender", {}, sender + ": ") : null,
        element("bdi.snippet", {}, ...marked(snippetOf(withNames(message), query))),
      ),
    ),
  );
}
