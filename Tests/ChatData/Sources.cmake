target_sources(TidewellCoreTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/ChatStorageReaderTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatStorageSnapshotTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ContactsReaderTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DamagedDatabasesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DisplayNameTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/EncodedMessageTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/JIDTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MissingMessagesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/NameResolverTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ScanSummaryTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/SenderNameTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/SnapshotLoaderTests.cpp)
