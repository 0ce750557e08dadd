# Checks of the source tree itself.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
  set(check_python ${Python3_EXECUTABLE})
else()
  set(check_python ${CMAKE_COMMAND} -E false "python3 is missing:")
endif()
add_test(NAME check.layers
  COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/layers.py ${CMAKE_SOURCE_DIR}/src)
add_test(NAME check.headers
  COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/headers.py ${CMAKE_SOURCE_DIR}/src ${CMAKE_CXX_COMPILER}
          ${CMAKE_CURRENT_BINARY_DIR}/headers.json)
