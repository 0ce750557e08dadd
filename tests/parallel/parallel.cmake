# Jobs of real tasks; jobs whose tasks or master are killed; jobs of runs that files steer: over sockets, and over MPI
# and PVM where the modules were built; over MPI to other machines where this one can play them.
foreach(library local mpi pvm)
  if(library STREQUAL "local" OR TARGET zeb_${library})
    foreach(what parallel kills job_steering)
      add_test(NAME parallel.${what}_${library}
        COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/parallel/${what}_test.py
                --zeb $<TARGET_FILE:zeb> --mode ${library})
      set_tests_properties(parallel.${what}_${library} PROPERTIES TIMEOUT 600)
    endforeach()
  endif()
endforeach()

if(TARGET zeb_mpi)
  add_test(NAME parallel.machines_mpi
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/parallel/machines_test.py --zeb $<TARGET_FILE:zeb>)
  set_tests_properties(parallel.machines_mpi PROPERTIES SKIP_RETURN_CODE 77)
endif()

add_test(NAME parallel.damaged_messages
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/parallel/damaged_messages_test.py --zeb $<TARGET_FILE:zeb>)

add_test(NAME parallel.cores
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/parallel/cores_test.py --zeb $<TARGET_FILE:zeb>)
