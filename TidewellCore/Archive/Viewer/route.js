// What is open stands in the address after "#", so that Back works and a message can be
// linked to: mode=messages&q=words&chat=id&message=id, each part only when it is set.

function readRoute(hash = location.hash) {
  const values = new URLSearchParams(hash.slice(1));
  return {
    mode: values.get("mode") === "messages" ? "messages" : "chats",
    query: values.get("q") || "",
    chat: values.get("chat") || null,
    message: (values.get("chat") && values.get("message")) || null,
  };
}

function writeRoute({ mode, query, chat, message }) {
  const values = new URLSearchParams();
  if (mode === "messages") values.set("mode", mode);
  if (mode === "messages" && query) values.set("q", query);
  if (chat) values.set("chat", chat);
  if (chat && message) values.set("message", message);
  return "#" + values;
}

// How long typing or scrolling rests before the address follows, in milliseconds. Browsers refuse addresses that come
// faster than a hundred in half a minute.
const ADDRESS_REST = 400;

// Writes the address and what the history keeps beside it. A browser may refuse both: what is shown depends on neither.
class Address {
  constructor() {
    this.pending = null;
    window.addEventListener("pagehide", () => this.settle());
  }

  get state() {
    return history.state || {};
  }

  // A place of its own to go Back to.
  push(route, state) {
    this.settle();
    this.write("pushState", state, writeRoute(route));
  }

  // The same place, once there is rest.
  replace(route) {
    this.later({ address: writeRoute(route) });
  }

  // What a reload finds again at this place.
  keep(state) {
    this.later({ state: { ...this.pending?.state, ...state } });
  }

  later(change) {
    this.pending = { ...this.pending, ...change };
    clearTimeout(this.waiting);
    this.waiting = setTimeout(() => this.settle(), ADDRESS_REST);
  }

  settle() {
    if (this.pending) this.write("replaceState", { ...this.state, ...this.pending.state }, this.pending.address);
    this.drop();
  }

  // What was to be written belongs to a place that was left.
  drop() {
    clearTimeout(this.waiting);
    this.pending = null;
  }

  write(method, state, address) {
    try {
      history[method](state, "", address);
    } catch {
      // The address stays as it is.
    }
  }
}
