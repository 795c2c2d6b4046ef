# SPDX-License-Identifier: MIT
# What is installed, and the packages: a .deb for Linux; an installer and a zip for Windows.

set(CPACK_PACKAGE_NAME vt63x-serial-test)
set(CPACK_PACKAGE_VENDOR "VT63x tools")
set(CPACK_PACKAGE_CONTACT "VT63x tools <vt63x-tools@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Test program for VT63x contactless reader chips")
set(CPACK_PACKAGE_DESCRIPTION
"Reads and writes the registers of a VT63x chip on a serial port, runs command files and drives
ISO 14443 type A cards through the chip. With a window (wps), on the command line (wcf), and with a
simulated chip (vt63x-sim).")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

file(GLOB examples ${CMAKE_SOURCE_DIR}/examples/*.wcf)

if(WIN32)
  install(TARGETS wps wcf vt63x-sim RUNTIME DESTINATION .)
  install(FILES ${examples} DESTINATION examples)
  install(FILES docs/command-language.md DESTINATION .)

  set(CPACK_GENERATOR NSIS ZIP)
  set(CPACK_PACKAGE_INSTALL_DIRECTORY "VT63x Serial Test")
  set(CPACK_PACKAGE_EXECUTABLES wps "VT63x Serial Test")
  set(CPACK_NSIS_DISPLAY_NAME "VT63x Serial Test")
  set(CPACK_NSIS_PACKAGE_NAME "VT63x Serial Test")
  set(CPACK_NSIS_INSTALL_ROOT "$PROGRAMFILES64")
  set(CPACK_NSIS_EXECUTABLES_DIRECTORY .)
  set(CPACK_NSIS_INSTALLED_ICON_NAME wps.exe)
  set(CPACK_NSIS_ENABLE_UNINSTALL_BEFORE_INSTALL ON)
  set(CPACK_NSIS_MODIFY_PATH ON)
  # A 64-bit installer, like what it installs. The packager adds the dash.
  set(CPACK_NSIS_EXECUTABLE_PRE_ARGUMENTS "XTarget\\ amd64-unicode")
else()
  install(TARGETS wps wcf vt63x-sim RUNTIME DESTINATION bin)
  install(FILES ${examples} DESTINATION share/doc/vt63x-serial-test/examples)
  install(FILES README.md docs/command-language.md DESTINATION share/doc/vt63x-serial-test)
  install(FILES packaging/linux/vt63x-serial-test.desktop DESTINATION share/applications)
  foreach(size 16 32 48)
    install(FILES packaging/linux/icon-${size}.png
      DESTINATION share/icons/hicolor/${size}x${size}/apps RENAME vt63x-serial-test.png)
  endforeach()
  install(FILES packaging/linux/60-vt63x-serial-test.rules DESTINATION /usr/lib/udev/rules.d)

  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  # The toolkit loads its connection to the screen when it starts.
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, fonts-dejavu-core")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${CMAKE_SOURCE_DIR}/packaging/linux/postinst ${CMAKE_SOURCE_DIR}/packaging/linux/postrm)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

  # The pages of programs that explain themselves are made from what they say.
  find_program(VT63X_HELP2MAN help2man)
  if(VT63X_HELP2MAN)
    set(man ${CMAKE_BINARY_DIR}/man)
    configure_file(packaging/linux/wps.1.in ${man}/wps.1 @ONLY)
    add_custom_command(OUTPUT ${man}/wps.1.gz COMMAND gzip -9nkf ${man}/wps.1
      DEPENDS ${man}/wps.1 VERBATIM)
    set(pages ${man}/wps.1.gz)
    foreach(program_text
        "wcf|run command files and single commands on a VT63x chip"
        "vt63x-sim|simulated VT63x chip on a serial line")
      string(REPLACE "|" ";" program_text ${program_text})
      list(GET program_text 0 program)
      list(GET program_text 1 text)
      add_custom_command(OUTPUT ${man}/${program}.1.gz
        COMMAND ${VT63X_HELP2MAN} --no-info --name=${text} --output=${man}/${program}.1
          $<TARGET_FILE:${program}>
        COMMAND gzip -9nf ${man}/${program}.1
        DEPENDS ${program} VERBATIM)
      list(APPEND pages ${man}/${program}.1.gz)
    endforeach()
    add_custom_target(man_pages ALL DEPENDS ${pages})
    install(FILES ${pages} DESTINATION share/man/man1)
  endif()
endif()

include(CPack)
