# The application itself: the window over TidewellSession, and its texts beside it.
find_package(Qt6 6.4 REQUIRED COMPONENTS Gui DBus Qml Quick QuickControls2)
add_subdirectory(Screens)

# A translator adds a file and nothing else.
set(bundle Tidewell_Tidewell.bundle)
file(GLOB tables CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} Resources/${bundle}/*.json)

qt_add_executable(Tidewell MACOSX_BUNDLE main.cpp ${tables})
target_compile_definitions(Tidewell PRIVATE TIDEWELL_VERSION="${PROJECT_VERSION}")
target_link_libraries(Tidewell PRIVATE TidewellScreens TidewellWarnings)
set_target_properties(Tidewell PROPERTIES MACOSX_BUNDLE_INFO_PLIST ${PROJECT_BINARY_DIR}/packaging/Info.plist)
qt_add_resources(Tidewell icon PREFIX / BASE ${PROJECT_SOURCE_DIR}/packaging
  FILES ${PROJECT_SOURCE_DIR}/packaging/app.tidewell.Tidewell.svg)
# Beside the command line `tidewell`, also where upper and lower case are the same.
if(NOT APPLE)
  set_target_properties(Tidewell PROPERTIES OUTPUT_NAME tidewell-app)
endif()
install(TARGETS Tidewell RUNTIME DESTINATION bin BUNDLE DESTINATION .)

if(APPLE)
  set_source_files_properties(${tables} PROPERTIES MACOSX_PACKAGE_LOCATION Resources/${bundle})
else()
  foreach(table IN LISTS tables)
    add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${table}
      COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_SOURCE_DIR}/${table} ${CMAKE_CURRENT_BINARY_DIR}/${table}
      DEPENDS ${table})
    target_sources(Tidewell PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${table})
  endforeach()
  install(FILES ${tables} DESTINATION share/tidewell/${bundle})
endif()
