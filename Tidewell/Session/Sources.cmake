target_sources(TidewellSession PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/BackgroundWork.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportState.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportViewModel.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportViewModel.h
  ${CMAKE_CURRENT_LIST_DIR}/ExportViewModelBackup.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportViewModelExport.cpp)
