find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME steering_files
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/steering.py $<TARGET_FILE:zeb>)
