
 window.CHATS  =  [ ] ;
	window.ARCHIVE	=	"text" ;
