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
