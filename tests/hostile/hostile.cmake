# Random bytes and shuffled commands, with a fixed seed; a longer run by hand (--runs, --seed).
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME hostile_input
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/hostile_input.py
          --zeb $<TARGET_FILE:zeb> --runs 60)
add_test(NAME trailing_words
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/trailing_words.py
          --zeb $<TARGET_FILE:zeb>)
