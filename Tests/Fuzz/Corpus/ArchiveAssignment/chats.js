window.ARCHIVE = {"blocks":[{"chats":[["a",0,2]],"file":"block-0123456789abcdef.js"}],"strings":{"title":"Chat Archive"},"timeZone":"UTC","title":"Chat Archive"};
window.CHATS = [{"count":2,"file":"chat-a.js","folder":"Ana","group":false,"id":"a","jid":"a@s.whatsapp.net","lastTs":1678307200,"name":"Ana \u003cb> \u2028","preview":"You: hi"}];
