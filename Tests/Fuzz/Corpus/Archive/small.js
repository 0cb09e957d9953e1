window.ARCHIVE = {"blocks":[{"chats":[["a",0,1]],"file":"block-0.js"}]};
window.CHATS = [{"file":"chat-a.js","folder":"Ana","id":"a","jid":"a@s.whatsapp.net"}];
