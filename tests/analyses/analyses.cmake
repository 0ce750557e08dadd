# The smaller analyses on random trees and data, against oracles that are slow and obvious.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME analyses.oracles
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/oracles.py $<TARGET_FILE:zeb>)
