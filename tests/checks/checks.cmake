# Checks of the source tree itself, and of what a search with a fixed seed does.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
  set(check_python ${Python3_EXECUTABLE})
else()
  set(check_python ${CMAKE_COMMAND} -E false "python3 is missing:")
endif()
foreach(check layers homes ownership)
  add_test(NAME check.${check}
    COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/${check}.py ${CMAKE_SOURCE_DIR}/src)
endforeach()
foreach(check words documents)
  add_test(NAME check.${check} COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/${check}.py ${CMAKE_SOURCE_DIR})
endforeach()
add_test(NAME check.planted_faults COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/planted_faults.py)
add_test(NAME check.headers
  COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/headers.py ${CMAKE_SOURCE_DIR}/src ${CMAKE_CXX_COMPILER}
          ${CMAKE_CURRENT_BINARY_DIR}/headers.json)
add_test(NAME check.signature
  COMMAND ${CMAKE_SOURCE_DIR}/bench/signature $<TARGET_FILE:zeb> ${CMAKE_SOURCE_DIR}/bench/signature.expected)
