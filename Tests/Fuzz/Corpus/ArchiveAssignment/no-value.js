window.CHATS = ;
window.ARCHIVE =