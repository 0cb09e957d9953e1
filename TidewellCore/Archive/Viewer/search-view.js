// The results of a search over all messages, newest first, growing while it runs.

const SEARCH_MINIMUM = 2;
const TYPING_PAUSE = 120;

class SearchView {
  constructor({ open }) {
    this.host = byId("search-results");
    this.status = byId("search-status");
    this.hits = [];
    this.typed = null;
    this.query = "";
    this.list = new Listbox(this.host, {
      row: (index) => hitRow(this.hits[index], this.query),
      height: 84,
      picked: (index) => open(this.hits[index].chat, messageOfHit(this.hits[index]).id),
    });
    this.list.steerFrom(byId("search"));
    this.look("");
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
    this.list.fill(0);
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
    const after = this.hits;
    this.list.grow(after.length, (index) => Math.max(0, after.indexOf(before[index])));
    this.status.textContent = text("searching") + " " + text("resultCount", { n: after.length });
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
