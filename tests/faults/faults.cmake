# A program in which a call of the system goes wrong, and every reader and writer run with it.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_executable(zeb_faulty ${PROJECT_SOURCE_DIR}/src/main.cpp
               ${CMAKE_CURRENT_LIST_DIR}/faulty_file_calls.cpp
               ${CMAKE_CURRENT_LIST_DIR}/planned_fault.cpp
               ${CMAKE_CURRENT_LIST_DIR}/allocations.cpp)
target_link_libraries(zeb_faulty PRIVATE zeb_core)
add_test(NAME file_faults
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/file_faults.py $<TARGET_FILE:zeb_faulty>)
add_test(NAME allocation_faults
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/allocation_faults.py $<TARGET_FILE:zeb_faulty>)
