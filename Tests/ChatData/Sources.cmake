target_sources(TidewellCoreTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/ChatStorageReaderTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatStorageSnapshotTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/SenderNameTests.cpp)
