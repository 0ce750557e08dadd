# Jobs of real tasks: over sockets, and over MPI and PVM where the modules were built.
add_test(NAME parallel.local
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/parallel/parallel_test.py
          --zeb $<TARGET_FILE:zeb> --mode local)
foreach(library mpi pvm)
  if(TARGET zeb_${library})
    add_test(NAME parallel.${library}
      COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/parallel/parallel_test.py
              --zeb $<TARGET_FILE:zeb> --mode ${library})
    set_tests_properties(parallel.${library} PROPERTIES TIMEOUT 300)
  endif()
endforeach()

add_test(NAME parallel.cores
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/parallel/cores_test.py --zeb $<TARGET_FILE:zeb>)
