# One test for each topic of the script tests: each room of the program has one.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
file(GLOB script_cases CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/scripts/*/*.run)
set(script_topics "")
foreach(case IN LISTS script_cases)
  get_filename_component(directory ${case} DIRECTORY)
  get_filename_component(topic ${directory} NAME)
  list(APPEND script_topics ${topic})
endforeach()
list(REMOVE_DUPLICATES script_topics)
foreach(topic IN LISTS script_topics)
  if(NOT IS_DIRECTORY ${CMAKE_SOURCE_DIR}/src/${topic})
    message(FATAL_ERROR "tests/scripts/${topic}: topics are the rooms of src/")
  endif()
  add_test(NAME scripts.${topic}
           COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/run_scripts.py
                   --zeb $<TARGET_FILE:zeb> ${topic})
  set_tests_properties(scripts.${topic} PROPERTIES LABELS scripts)
endforeach()
