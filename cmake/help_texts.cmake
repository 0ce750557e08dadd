# Embeds every help/<name>.txt in the binary: build/help_texts.cpp holds one table of name and text.
file(GLOB help_files CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/help/*.txt)
set(help_source ${CMAKE_CURRENT_BINARY_DIR}/help_texts.cpp)
add_custom_command(
  OUTPUT ${help_source}
  COMMAND ${CMAKE_COMMAND} -DHELP_DIR=${CMAKE_CURRENT_SOURCE_DIR}/help -DOUTPUT=${help_source}
          -P ${CMAKE_CURRENT_SOURCE_DIR}/cmake/embed_help.cmake
  DEPENDS ${help_files} ${CMAKE_CURRENT_SOURCE_DIR}/cmake/embed_help.cmake
  VERBATIM)
target_sources(zeb_core PRIVATE ${help_source})
