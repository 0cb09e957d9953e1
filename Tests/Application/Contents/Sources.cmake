target_sources(TidewellSessionTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/BackupStepContentTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatChoiceContentTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DoneStepContentTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderChooserContentTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/OptionsStepContentTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ProgressStepContentTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TypeAheadTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/WindowContentTests.cpp)
