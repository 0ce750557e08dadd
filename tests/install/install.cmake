# The program as it is installed, and packed.
add_test(NAME install.installed
  COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/installed.py ${CMAKE_COMMAND} ${CMAKE_BINARY_DIR})
