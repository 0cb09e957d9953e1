target_sources(TidewellSession PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/BackupStepContent.cpp
  ${CMAKE_CURRENT_LIST_DIR}/BackupStepContent.h
  ${CMAKE_CURRENT_LIST_DIR}/ChatChoiceContent.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChatChoiceContent.h
  ${CMAKE_CURRENT_LIST_DIR}/DoneStepContent.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DoneStepContent.h
  ${CMAKE_CURRENT_LIST_DIR}/FolderChooserContent.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FolderChooserContent.h
  ${CMAKE_CURRENT_LIST_DIR}/OptionsStepContent.cpp
  ${CMAKE_CURRENT_LIST_DIR}/OptionsStepContent.h
  ${CMAKE_CURRENT_LIST_DIR}/ProgressStepContent.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ProgressStepContent.h
  ${CMAKE_CURRENT_LIST_DIR}/TypeAhead.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TypeAhead.h
  ${CMAKE_CURRENT_LIST_DIR}/WindowContent.cpp
  ${CMAKE_CURRENT_LIST_DIR}/WindowContent.h)
