target_sources(TidewellSession PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/BackupPasswordStore.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FinderSupport.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderListing.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderPlaces.cpp
  ${CMAKE_CURRENT_LIST_DIR}/L10n.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PlatformServices.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ResourceBundle.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ScopedAccess.cpp
  ${CMAKE_CURRENT_LIST_DIR}/StringTable.cpp)
