target_sources(TidewellSessionTests PRIVATE
  ${PROJECT_SOURCE_DIR}/Tests/Export/ExportScene.cpp
  ${CMAKE_CURRENT_LIST_DIR}/BackgroundWorkTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ChoosingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportStateTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/Fakes.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LibraryTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PasswordTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/WizardScene.cpp)
