# Data sets that differ in known ways.
add_test(NAME comparisons.random_changes
  COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/random_changes.py $<TARGET_FILE:zeb>)
add_test(NAME comparisons.random_trees
  COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/random_trees.py $<TARGET_FILE:zeb>)
