# Searches as a user gives them, on random data and on data whose traps are known.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME drivers.random_runs
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/random_runs.py $<TARGET_FILE:zeb>)
add_test(NAME drivers.traps
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/traps.py $<TARGET_FILE:zeb>)
