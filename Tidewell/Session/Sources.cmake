target_sources(TidewellSession PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/BackgroundWork.cpp
  ${CMAKE_CURRENT_LIST_DIR}/BackupChoice.cpp
  ${CMAKE_CURRENT_LIST_DIR}/BackupPassword.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatChoice.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatScan.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DestinationChoice.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportRun.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportSession.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportSession.h
  ${CMAKE_CURRENT_LIST_DIR}/ExportState.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportViewModel.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportViewModel.h
  ${CMAKE_CURRENT_LIST_DIR}/FolderBrowser.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderBrowser.h
  ${CMAKE_CURRENT_LIST_DIR}/LibraryRefresh.cpp
  ${CMAKE_CURRENT_LIST_DIR}/VerifyRun.cpp)
