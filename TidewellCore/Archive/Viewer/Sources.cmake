# The viewer's script, in the order in which its files are joined.
set(VIEWER_SCRIPTS
  texts.js
  format.js
  fold.js
  dom.js
  line.js
  loader.js
  messages.js
  heights.js
  scroller.js
  listbox.js
  chat-list.js
  search.js
  search-view.js
  links.js
  media.js
  details.js
  attached.js
  notices.js
  bubble.js
  thread.js
  thread-tools.js
  lightbox.js
  route.js
  app.js
)

# The viewer's style sheet, likewise; later files override earlier ones.
set(VIEWER_STYLES
  base.css
  lists.css
  thread.css
  media.css
  attached.css
  lightbox.css
  conditions.css
)
