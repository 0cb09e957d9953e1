document.title = document.title;
