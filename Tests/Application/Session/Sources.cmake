target_sources(TidewellSessionTests PRIVATE
  ${PROJECT_SOURCE_DIR}/Tests/Export/ExportScene.cpp
  ${CMAKE_CURRENT_LIST_DIR}/BackgroundWorkTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CancelExportTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChoosingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DestinationTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DroppingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/EndingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportStateTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/Fakes.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LibraryTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ManyMessages.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PasswordTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/RememberingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ResponsivenessTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ScanTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/WizardScene.cpp)
