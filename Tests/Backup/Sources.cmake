target_sources(TidewellCoreTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/BackupInspectorTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/BackupLibraryTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DatabaseCheckTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ManifestStoreTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MaterializeTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/OpenedBackupTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/OpenedEncryptedBackupTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/StoredFileLocationTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TemporaryBackupDatabaseTests.cpp)
