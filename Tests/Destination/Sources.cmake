target_sources(TidewellCoreTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/DestinationIndexTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DestinationLockTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DiskSpaceTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/EarlierCopiesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportDestinationTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportLayoutTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderAllocatorTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderManifestTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MergeMoveTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/NamingMemoryTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/OwnFilesTests.cpp)
