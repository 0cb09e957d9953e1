window.__CHAT_PAYLOAD = {"id":"a","messages":[{"media":{"name":"a.jpg","path":"Ana/a.jpg"},"text":"x"}]};
window.CHATS = [{"folder":"Ana/..","jid":"a"}];
