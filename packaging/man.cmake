# Man pages. Those of section 3 are written from the host's header, the others stand in docs/man.
find_package(Python3 COMPONENTS Interpreter)
find_program(GZIP gzip REQUIRED)

set(man_dir ${CMAKE_CURRENT_BINARY_DIR}/man)
set(man_source ${PROJECT_SOURCE_DIR}/docs/man)
set(man_header ${PROJECT_SOURCE_DIR}/include/VeskTarvoM5/VeskTarvoM5.h)
set(man_script ${PROJECT_SOURCE_DIR}/scripts/man)
file(GLOB man_written CONFIGURE_DEPENDS ${man_source}/*.1 ${man_source}/*.7)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${man_header} ${man_script}
                                       ${man_written})

file(REMOVE_RECURSE ${man_dir})
if(Python3_FOUND)
  execute_process(COMMAND ${Python3_EXECUTABLE} ${man_script} ${man_header} ${man_dir}
                          COMMAND_ERROR_IS_FATAL ANY)
else()
  message(STATUS "Without Python the man pages of section 3 are left out")
endif()
file(COPY ${man_written} DESTINATION ${man_dir})

# Compressed without a time stamp, as packages want it.
file(GLOB man_pages ${man_dir}/*)
execute_process(COMMAND ${GZIP} -9 --no-name --force ${man_pages} COMMAND_ERROR_IS_FATAL ANY)
foreach(section 1 3 7)
  file(GLOB pages ${man_dir}/*.${section}.gz)
  set(component development)
  if(section EQUAL 1)
    set(component tools)
  endif()
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endforeach()
