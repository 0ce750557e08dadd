# Jobs of real tasks, and jobs whose tasks or master are killed: over sockets, and over MPI and PVM where the modules
# were built.
foreach(library local mpi pvm)
  if(library STREQUAL "local" OR TARGET zeb_${library})
    foreach(what parallel kills)
      set(name parallel.${library})
      if(what STREQUAL "kills")
        set(name parallel.kills_${library})
      endif()
      add_test(NAME ${name}
        COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/parallel/${what}_test.py
                --zeb $<TARGET_FILE:zeb> --mode ${library})
      set_tests_properties(${name} PROPERTIES TIMEOUT 600)
    endforeach()
  endif()
endforeach()

add_test(NAME parallel.cores
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/parallel/cores_test.py --zeb $<TARGET_FILE:zeb>)
