target_sources(TidewellCoreTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/ArchiveFormatTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ArchiveRelocationTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CSVTextTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatArchiveAssetsTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatArchiveJSONTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatArchiveWriterTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatLinesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/EarlierPagesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/EveryKindTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/JSONTextTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MessageFilesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MessageLineTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MessageWordsTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/NoticeWordsTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ProfilePicturesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TextMarksTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TranscriptWriterTests.cpp)

# Where the golden transcripts are, to be compared and, on request, written anew.
set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/EveryKindTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TranscriptWriterTests.cpp PROPERTIES
  COMPILE_DEFINITIONS TIDEWELL_GOLDEN_FOLDER="${CMAKE_CURRENT_LIST_DIR}/Golden")
