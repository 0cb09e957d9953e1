# The warnings every target of the project is built with. Linked privately, so
# that nobody who uses the core inherits them.
add_library(TidewellWarnings INTERFACE)
target_compile_options(TidewellWarnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual
  -Wimplicit-fallthrough -Wswitch
  # Records are built with designated initialisers; what is not named keeps its default.
  -Wno-missing-field-initializers
  # At high optimisation it is raised inside the standard library's own headers.
  $<$<CONFIG:Debug>:-Wnull-dereference>
  # g++ 12 sees overlaps in joined strings that are none (its bug 105329).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(TIDEWELL_WARNINGS_AS_ERRORS)
  target_compile_options(TidewellWarnings INTERFACE -Werror)
endif()
