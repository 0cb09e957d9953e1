target_sources(TidewellCoreTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/ExportDeduperArchiveTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportDeduperInterruptionTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportDeduperTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderPairingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LibraryRelocationTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MergeJournalTests.cpp)
