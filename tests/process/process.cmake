# What the program is to those that start it: output, exit status, signals.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME process
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/process_test.py $<TARGET_FILE:zeb>)
add_test(NAME kills
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/kills.py $<TARGET_FILE:zeb>)
