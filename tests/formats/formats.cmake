# What is written reads back the same, here and elsewhere.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME formats.round_trip
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/round_trip.py $<TARGET_FILE:zeb>)
add_test(NAME formats.tree_sets
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/tree_sets.py $<TARGET_FILE:zeb>)
add_test(NAME formats.other_readers
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/other_readers.py $<TARGET_FILE:zeb> ${CMAKE_SOURCE_DIR}/examples)
add_test(NAME formats.damaged_files
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/damaged_files.py $<TARGET_FILE:zeb> ${CMAKE_SOURCE_DIR}/tests/scripts)
add_test(NAME formats.matrix_sets
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/matrix_sets.py $<TARGET_FILE:zeb> 1 20)
