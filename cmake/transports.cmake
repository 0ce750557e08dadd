# Modules that the program loads when a parallel run first needs them, one for each library. They
# stand beside the program, or in lib/zeb where it is installed.
function(zeb_transport name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
  target_include_directories(${name} PRIVATE src)
  target_link_libraries(${name} PRIVATE zeb_warnings)
  install(TARGETS ${name} LIBRARY DESTINATION lib/zeb)
endfunction()

if(ZEB_MPI AND NOT ZEB_STATIC)
  set(MPI_CXX_SKIP_MPICXX ON)
  find_package(MPI QUIET COMPONENTS CXX)
  if(MPI_CXX_FOUND)
    zeb_transport(zeb_mpi src/parallel/modules/mpi_transport.cpp src/parallel/modules/daemon_watch.cpp
      src/parallel/modules/joining.cpp src/parallel/modules/joining_watch.cpp
      src/parallel/modules/mpi_environment.cpp
      src/parallel/transport/processes.cpp)
    target_compile_definitions(zeb_mpi PRIVATE OMPI_SKIP_MPICXX MPICH_SKIP_MPICXX)
    target_include_directories(zeb_mpi SYSTEM PRIVATE ${MPI_CXX_INCLUDE_DIRS})
    target_link_libraries(zeb_mpi PRIVATE ${MPI_CXX_LIBRARIES})
  endif()
endif()

if(ZEB_PVM AND NOT ZEB_STATIC)
  find_path(PVM_INCLUDE_DIR pvm3.h)
  find_library(PVM_LIBRARY pvm3)
  if(PVM_INCLUDE_DIR AND PVM_LIBRARY)
    zeb_transport(zeb_pvm src/parallel/modules/pvm_transport.cpp)
    target_include_directories(zeb_pvm SYSTEM PRIVATE ${PVM_INCLUDE_DIR})
    target_link_libraries(zeb_pvm PRIVATE ${PVM_LIBRARY})
  endif()
endif()
