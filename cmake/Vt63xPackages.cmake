# SPDX-License-Identifier: MIT
# The packages that the programs and tests are built from, found for the system or, for another
# one, in what Debian installs for every system: headers, and the sources of GoogleTest.

# vt63x_header_package(PACKAGE TARGET HEADER): makes TARGET, a package that is headers only.
function(vt63x_header_package package target header)
  if(NOT CMAKE_CROSSCOMPILING)
    find_package(${package} REQUIRED GLOBAL)
    return()
  endif()
  if(TARGET ${target})
    return()
  endif()
  # A link to the one folder: the other headers there are the build machine's.
  cmake_path(GET header PARENT_PATH folder)
  set(root ${CMAKE_BINARY_DIR}/include-roots/${package})
  file(MAKE_DIRECTORY ${root})
  if(NOT EXISTS /usr/include/${header})
    message(FATAL_ERROR "/usr/include/${header} is missing")
  endif()
  if(NOT EXISTS ${root}/${folder})
    file(CREATE_LINK /usr/include/${folder} ${root}/${folder} SYMBOLIC)
  endif()
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  set_target_properties(${target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${root})
endfunction()

# Makes GTest::gtest_main.
macro(vt63x_find_gtest)
  if(CMAKE_CROSSCOMPILING)
    set(gtest_force_shared_crt ON)
    set(INSTALL_GTEST OFF)
    set(BUILD_GMOCK OFF)
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    if(NOT TARGET GTest::gtest_main)
      add_library(GTest::gtest_main ALIAS gtest_main)
    endif()
  else()
    find_package(GTest REQUIRED)
  endif()
endmacro()
