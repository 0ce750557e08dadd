# Random bytes, shuffled commands, names made as commands: with a fixed seed; longer by hand (--runs, --seed).
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME hostile_input
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/hostile_input.py
          --zeb $<TARGET_FILE:zeb> --runs 60)
add_test(NAME trailing_words
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/trailing_words.py
          --zeb $<TARGET_FILE:zeb>)
add_test(NAME hostile_names
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/hostile_names.py $<TARGET_FILE:zeb>)
