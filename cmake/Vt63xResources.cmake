# SPDX-License-Identifier: MIT
# Resources of a program (dialogs, menus, icons), compiled from resource scripts. Windows links
# them; elsewhere they are put into the program in the standard .res format, between two symbols
# where platform/window finds them.

find_program(VT63X_WINDRES NAMES x86_64-w64-mingw32-windres REQUIRED)

# The version that windows and files show, from the project's.
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/generated/vt63x_version.h CONTENT
"#define VT63X_VERSION_NUMBERS @PROJECT_VERSION_MAJOR@, @PROJECT_VERSION_MINOR@, @PROJECT_VERSION_PATCH@, 0
#define VT63X_VERSION_TEXT \"@PROJECT_VERSION_MAJOR@.@PROJECT_VERSION_MINOR@\"
#define VT63X_ABOUT_TEXT \"VT63x RS232 Test v@PROJECT_VERSION_MAJOR@.@PROJECT_VERSION_MINOR@\"
" @ONLY)

# Compiles `script` to `result`, in windres's FORMAT.
function(vt63x_compile_resources script result format)
  if(WIN32)
    set(headers)  # the system's own
  else()
    set(headers -I ${CMAKE_SOURCE_DIR}/platform/include)
  endif()
  add_custom_command(OUTPUT ${result}
    COMMAND ${VT63X_WINDRES} --output-format=${format} --codepage=65001
      "--preprocessor=${CMAKE_C_COMPILER}" --preprocessor-arg=-E --preprocessor-arg=-xc
      --preprocessor-arg=-DRC_INVOKED
      ${headers} -I ${CMAKE_SOURCE_DIR} -I ${CMAKE_BINARY_DIR}/generated
      -i ${script} -o ${result}
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
    DEPENDS ${script} ${ARGN} ${CMAKE_BINARY_DIR}/generated/vt63x_version.h
      ${CMAKE_SOURCE_DIR}/platform/include/winresrc.h
      ${CMAKE_SOURCE_DIR}/platform/include/win32/styles.h
    VERBATIM)
endfunction()

# Puts the compiled FILES into `target` between two symbols.
function(vt63x_embed_resources target)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}-resources.S)
  set(lines ".section .rodata\n.global vt63x_resources\n.global vt63x_resources_size\n")
  string(APPEND lines ".balign 8\nvt63x_resources:\n")
  foreach(file ${ARGN})
    string(APPEND lines ".incbin \"${file}\"\n")
  endforeach()
  string(APPEND lines "vt63x_resources_end:\n.balign 8\nvt63x_resources_size:\n"
    ".quad vt63x_resources_end - vt63x_resources\n.section .note.GNU-stack,\"\",@progbits\n")
  file(GENERATE OUTPUT ${source} CONTENT "${lines}")
  set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS "${ARGN}" LANGUAGE ASM)
  target_sources(${target} PRIVATE ${source})
endfunction()

# vt63x_resources(TARGET SCRIPT.rc... [FILES icons and headers that the scripts include])
function(vt63x_resources target)
  cmake_parse_arguments(ARG "" "" "FILES" ${ARGN})
  if(WIN32)
    set(format coff)
    set(extension obj)
  else()
    set(format res)
    set(extension res)
  endif()
  set(compiled)
  foreach(script ${ARG_UNPARSED_ARGUMENTS})
    cmake_path(GET script STEM name)
    set(result ${CMAKE_CURRENT_BINARY_DIR}/${target}-${name}.${extension})
    vt63x_compile_resources(${script} ${result} ${format} ${ARG_FILES})
    list(APPEND compiled ${result})
  endforeach()
  if(WIN32)
    set_source_files_properties(${compiled} PROPERTIES EXTERNAL_OBJECT TRUE GENERATED TRUE)
    target_sources(${target} PRIVATE ${compiled})
  else()
    vt63x_embed_resources(${target} ${compiled})
  endif()
endfunction()
