# What is installed, and how it is packed: `cpack -G DEB` or `cpack -G TGZ` in the build tree.
set(zeb_completion ${CMAKE_CURRENT_BINARY_DIR}/zeb.bash)
add_custom_command(
  OUTPUT ${zeb_completion}
  COMMAND zeb --completion > ${zeb_completion}
  DEPENDS zeb
  VERBATIM)
add_custom_target(zeb_completion ALL DEPENDS ${zeb_completion})

install(TARGETS zeb)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zeb.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${zeb_completion} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME zeb)
install(FILES README.md NEWS LICENSE CITATION.cff docs/tutorial.md ${CMAKE_CURRENT_BINARY_DIR}/commands.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_PACKAGE_VENDOR "The ZEB developers")
set(CPACK_PACKAGE_CONTACT "The ZEB developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "phylogenetic analysis under maximum parsimony")
set(CPACK_PACKAGE_DESCRIPTION
  "ZEB reads a matrix of terminals by characters, searches for the most parsimonious\ntrees, and summarises what it finds as consensus trees, tables and figures.")
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_CURRENT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
# The static program needs nothing; what the other one needs, the packaging tools find out.
if(NOT ZEB_STATIC)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
include(CPack)
