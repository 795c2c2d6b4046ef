# SPDX-License-Identifier: MIT
# One folder, one target. A header is included by its path from the root ("serial/serial_bus.h"),
# and that path resolves only for the folders that the target is linked with: every folder is
# staged alone, as a link, below an include root of its own. An include that the dependency table
# does not allow therefore does not compile.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

set(VT63X_SANITIZE "" CACHE STRING "Sanitizers, comma separated (address,undefined or thread)")

add_library(vt63x_flags INTERFACE)
target_compile_options(vt63x_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(WIN32)
  # The system's own header defines min and max unless told not to.
  target_compile_definitions(vt63x_flags INTERFACE NOMINMAX)
  # Where this compiler, version 12, sees faults inside the standard library that are none.
  target_compile_options(vt63x_flags INTERFACE
    -Wno-restrict -Wno-maybe-uninitialized -Wno-stringop-overread)
endif()
if(VT63X_FUZZ)
  target_compile_options(vt63x_flags INTERFACE -w)  # the usual compiler judges, not this one
endif()
if(VT63X_SANITIZE)
  target_compile_options(vt63x_flags INTERFACE
    -fsanitize=${VT63X_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vt63x_flags INTERFACE -fsanitize=${VT63X_SANITIZE})
endif()

# vt63x_stage(TARGET FOLDER SCOPE): makes FOLDER's headers reachable for whoever links TARGET.
function(vt63x_stage target folder scope)
  set(root ${CMAKE_BINARY_DIR}/include-roots/${target})
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY ${root}/${parent})
  if(NOT EXISTS ${root}/${folder})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${root}/${folder} SYMBOLIC)
  endif()
  target_include_directories(${target} ${scope} ${root})
endfunction()

# vt63x_headers(TARGET FOLDER): a folder of headers only.
function(vt63x_headers target folder)
  add_library(${target} INTERFACE)
  vt63x_stage(${target} ${folder} INTERFACE)
endfunction()

# vt63x_library(TARGET FOLDER SOURCES ... DEPENDS ...)
function(vt63x_library target folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${target} STATIC ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE vt63x_flags PUBLIC ${ARG_DEPENDS})
  vt63x_stage(${target} ${folder} PUBLIC)
endfunction()

# vt63x_program(PROGRAM SOURCES ... DEPENDS ...)
function(vt63x_program target)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE vt63x_flags ${ARG_DEPENDS})
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endfunction()

# Tests that open a port or windows run one by one, each with a chip of its own, which
# scripts/wine-run starts. The others are quicker together: a start costs most of a second.
macro(vt63x_register_windows_test target)
  if(ARG_WINDOWS OR "win32" IN_LIST ARG_LABELS)
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 NO_PRETTY_VALUES
      PROPERTIES ${properties})
  else()
    add_test(NAME ${target} COMMAND ${target})
    set_tests_properties(${target} PROPERTIES ${properties})
  endif()
endmacro()

# vt63x_test(TARGET SOURCES ... DEPENDS ... [LABELS ...] [WINDOWS]): a GoogleTest program
# known to CTest. The label "threads" also runs it under ThreadSanitizer; WINDOWS says that it shows
# windows, for which it then needs no screen; the label "win32" that it opens a port by Win32
# calls.
function(vt63x_test target)
  cmake_parse_arguments(ARG "WINDOWS" "" "SOURCES;DEPENDS;LABELS" ${ARGN})
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE vt63x_flags ${ARG_DEPENDS} GTest::gtest_main)
  set(properties TIMEOUT 60)
  if(ARG_LABELS)
    list(APPEND properties LABELS ${ARG_LABELS})
  endif()
  if(WIN32)
    vt63x_register_windows_test(${target})
    return()
  endif()
  if(ARG_WINDOWS)
    target_link_libraries(${target} PRIVATE toolkit_suppressions)
    list(APPEND properties ENVIRONMENT QT_QPA_PLATFORM=offscreen)
  endif()
  gtest_discover_tests(${target} NO_PRETTY_VALUES PROPERTIES ${properties})
endfunction()
