# The parts of the viewer's script, in the order in which they are joined.
set(VIEWER_SCRIPTS app.js)
