# Makes the man page zeb.1 and the command reference commands.md of the help texts, in the build tree.
include(GNUInstallDirs)
set(zeb_manual ${CMAKE_CURRENT_BINARY_DIR}/zeb.1 ${CMAKE_CURRENT_BINARY_DIR}/commands.md)
add_custom_command(
  OUTPUT ${zeb_manual}
  COMMAND ${CMAKE_COMMAND} -DHELP_DIR=${CMAKE_CURRENT_SOURCE_DIR}/help -DVERSION=${PROJECT_VERSION}
          -DHEAD=${CMAKE_CURRENT_SOURCE_DIR}/cmake/zeb.1.in -DOUTPUT_DIR=${CMAKE_CURRENT_BINARY_DIR}
          -P ${CMAKE_CURRENT_SOURCE_DIR}/cmake/make_manual.cmake
  DEPENDS ${help_files} ${CMAKE_CURRENT_SOURCE_DIR}/cmake/make_manual.cmake
          ${CMAKE_CURRENT_SOURCE_DIR}/cmake/zeb.1.in
  VERBATIM)
add_custom_target(zeb_manual ALL DEPENDS ${zeb_manual})
