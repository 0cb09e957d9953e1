target_sources(TidewellSessionTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/BackupPasswordStoreTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FinderSupportTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderListingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderPlacesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/L10nTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PlatformServicesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ResourceBundleTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ScopedAccessTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/SourceTexts.cpp
  ${CMAKE_CURRENT_LIST_DIR}/StringTableTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TextsTests.cpp)
