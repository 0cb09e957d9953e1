# Writes ExportTextSources.cpp from the tables of texts: run as
# `cmake -DTEXTS=FOLDER -DOUTPUT=FILE -P EmbedTexts.cmake`.
include(${TEXTS}/Sources.cmake)

set(source "#include \"TidewellCore/ExportTextSources.h\"\n\n")
string(APPEND source "std::vector<ExportTextSources::Source> ExportTextSources::all() {\n  return {\n")
foreach(language IN LISTS EXPORT_TEXT_LANGUAGES)
  file(READ ${TEXTS}/${language}.json table)
  string(APPEND source "{\"${language}\", R\"texts(${table})texts\"},\n")
endforeach()
file(WRITE ${OUTPUT} "${source}  };\n}\n")
