# Writes ViewerSources.cpp from the viewer's files: run as
# `cmake -DVIEWER=FOLDER -DOUTPUT=FILE -P EmbedViewer.cmake`.
include(${VIEWER}/Sources.cmake)

file(READ ${VIEWER}/index.html page)
set(styleSheet "")
foreach(part IN LISTS VIEWER_STYLES)
  file(READ ${VIEWER}/${part} text)
  string(APPEND styleSheet "${text}\n")
endforeach()
# One function around all, so that nothing of it becomes a member of `window`.
set(script "(function () {\n\"use strict\";\n")
foreach(part IN LISTS VIEWER_SCRIPTS)
  file(READ ${VIEWER}/${part} text)
  string(APPEND script "\n${text}")
endforeach()
string(APPEND script "})();\n")

set(source "#include \"TidewellCore/Archive/ViewerSources.h\"\n")
foreach(entry page styleSheet script)
  string(APPEND source "\nstd::string_view ViewerSources::${entry}() {\n  return R\"viewer(${${entry}})viewer\";\n}\n")
endforeach()
file(WRITE ${OUTPUT} "${source}")
