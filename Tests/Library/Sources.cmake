target_sources(TidewellCoreTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/LibraryRows.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ArchiveOwnerTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LibraryTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MessageFactsReadTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MessageFactsTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MessageUnionTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PartsOfBackupsTests.cpp)
