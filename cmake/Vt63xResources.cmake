# Resources of a program (dialogs, menus, icons), compiled from resource scripts into the standard
# .res format. Windows links them; elsewhere they are put into the program as they are, between two
# symbols where platform/window finds them.

find_program(VT63X_WINDRES NAMES x86_64-w64-mingw32-windres REQUIRED)

# vt63x_resources(TARGET SCRIPT.rc... [FILES icons and headers that the scripts include])
function(vt63x_resources target)
  cmake_parse_arguments(ARG "" "" "FILES" ${ARGN})
  set(compiled)
  foreach(script ${ARG_UNPARSED_ARGUMENTS})
    cmake_path(GET script STEM name)
    set(result ${CMAKE_CURRENT_BINARY_DIR}/${target}-${name}.res)
    add_custom_command(OUTPUT ${result}
      COMMAND ${VT63X_WINDRES} --output-format=res --codepage=65001
        "--preprocessor=${CMAKE_C_COMPILER}" --preprocessor-arg=-E --preprocessor-arg=-xc
        --preprocessor-arg=-DRC_INVOKED
        -I ${CMAKE_SOURCE_DIR}/platform/include -I ${CMAKE_SOURCE_DIR}
        -i ${script} -o ${result}
      WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
      DEPENDS ${script} ${ARG_FILES}
        ${CMAKE_SOURCE_DIR}/platform/include/winresrc.h
        ${CMAKE_SOURCE_DIR}/platform/include/win32/styles.h
      VERBATIM)
    list(APPEND compiled ${result})
  endforeach()
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}-resources.S)
  set(lines ".section .rodata\n.global vt63x_resources\n.global vt63x_resources_size\n")
  string(APPEND lines ".balign 8\nvt63x_resources:\n")
  foreach(result ${compiled})
    string(APPEND lines ".incbin \"${result}\"\n")
  endforeach()
  string(APPEND lines "vt63x_resources_end:\n.balign 8\nvt63x_resources_size:\n"
    ".quad vt63x_resources_end - vt63x_resources\n.section .note.GNU-stack,\"\",@progbits\n")
  file(GENERATE OUTPUT ${source} CONTENT "${lines}")
  set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS "${compiled}" LANGUAGE ASM)
  target_sources(${target} PRIVATE ${source})
endfunction()
