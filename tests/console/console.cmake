# The console on a pseudo-terminal. Without Python the test fails, and says why.
foreach(group Editing History Questions Comparisons Viewer Interrupts Searches Screens Leaving WithoutTerminal)
  add_test(NAME console.${group}
    COMMAND ${check_python} ${CMAKE_CURRENT_LIST_DIR}/console_test.py $<TARGET_FILE:zeb> ${group})
  set_tests_properties(console.${group} PROPERTIES TIMEOUT 240)
endforeach()
