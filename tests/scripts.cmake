# One test for each topic of the script tests: each room of the program has one.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
file(GLOB script_topics CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/scripts/*)
foreach(directory IN LISTS script_topics)
  get_filename_component(topic ${directory} NAME)
  if(NOT IS_DIRECTORY ${CMAKE_SOURCE_DIR}/src/${topic})
    message(FATAL_ERROR "tests/scripts/${topic}: topics are the rooms of src/")
  endif()
  add_test(NAME scripts.${topic}
           COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/run_scripts.py
                   --zeb $<TARGET_FILE:zeb> ${topic})
  set_tests_properties(scripts.${topic} PROPERTIES LABELS scripts)
endforeach()
