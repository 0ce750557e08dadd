# What the documents show is what the program says.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
foreach(document README.md docs/tutorial.md)
  cmake_path(GET document STEM name)
  string(TOLOWER ${name} name)
  add_test(NAME docs.${name}
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/sessions.py ${CMAKE_SOURCE_DIR}/${document}
            $<TARGET_FILE:zeb> ${CMAKE_SOURCE_DIR}/examples)
endforeach()
add_test(NAME docs.examples
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/examples.py $<TARGET_FILE:zeb> ${CMAKE_SOURCE_DIR}/examples)
add_test(NAME docs.help_examples
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/help_examples.py $<TARGET_FILE:zeb>
          ${CMAKE_SOURCE_DIR}/help ${CMAKE_SOURCE_DIR}/examples)
