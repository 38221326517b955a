# Debian packages: `scripts/package` builds them for i386 and amd64.
#   libvesktarvom5-1    the library; both word sizes can stand on one till
#   libvesktarvom5-dev  header, CMake package, pkg-config
#   libkkmcheck1        the companion: its library and worker
#   vesktarvom5-tools   kkm and tarvo-register

set(packages libvesktarvom5-1 libvesktarvom5-dev vesktarvom5-tools)
set(libvesktarvom5-1_component library)
set(libvesktarvom5-dev_component development)
set(vesktarvom5-tools_component tools)
if(TARGET kkmcheck)
  list(APPEND packages libkkmcheck1)
  set(libkkmcheck1_component companion)
endif()

foreach(package ${packages})
  # Policy wants both files in every package, the change log compressed without a time stamp.
  set(doc ${CMAKE_INSTALL_DATADIR}/doc/${package})
  set(changelog ${CMAKE_CURRENT_BINARY_DIR}/${package}/changelog)
  configure_file(debian/changelog.in ${changelog})
  execute_process(COMMAND ${GZIP} -9 --no-name --force --keep ${changelog} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES debian/copyright ${changelog}.gz DESTINATION ${doc}
          COMPONENT ${${package}_component})
endforeach()

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
else()
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vesktarvom5)
set(CPACK_PACKAGE_VENDOR "VeskTarvoM5 developers")
set(CPACK_PACKAGE_CONTACT "VeskTarvoM5 developers <maintainers@vesktarvom5.invalid>")
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development tools)
if(TARGET kkmcheck)
  list(APPEND CPACK_COMPONENTS_ALL companion)
  set(companion_dependency ", libkkmcheck1 (= ${PROJECT_VERSION})")
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Named by hand: what the compiler of a 64-bit machine links 32-bit programs with belongs to other
# packages than those of a 32-bit machine.
set(runtime "libc6 (>= 2.36), libgcc-s1 (>= 4.2), libstdc++6 (>= 12)")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libvesktarvom5-1)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "${runtime}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/shlibs
                                               ${CMAKE_CURRENT_SOURCE_DIR}/debian/triggers)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "driver of Tarvo M5 cash registers\n\
Point-of-sale programs load it, connect to the register on a serial port,\n\
fill a check buffer, have the check printed and read the register's\n\
counters.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvesktarvom5-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libvesktarvom5-1 (= ${PROJECT_VERSION})${companion_dependency}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "driver of Tarvo M5 cash registers (development files)\n\
Header for C and C++, CMake package and pkg-config file.")

set(CPACK_DEBIAN_COMPANION_PACKAGE_NAME libkkmcheck1)
set(CPACK_DEBIAN_COMPANION_PACKAGE_DEPENDS
    "libvesktarvom5-1 (= ${PROJECT_VERSION}), libsqlite3-0 (>= 3.34), ${runtime}")
set(CPACK_DEBIAN_COMPANION_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/kkmcheck/shlibs
                                                 ${CMAKE_CURRENT_SOURCE_DIR}/debian/triggers)
set(CPACK_COMPONENT_COMPANION_DESCRIPTION
    "printed or not: outcomes of checks on Tarvo M5 cash registers\n\
Keeps a journal of checks, prints each once under a key of the host's, and\n\
tells after any failure whether it was printed, by the register's counters\n\
and control tape.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vesktarvom5-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
    "libvesktarvom5-1 (= ${PROJECT_VERSION})${companion_dependency}, ${runtime}")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "tools for Tarvo M5 cash registers\n\
The service engineer's tool kkm, and tarvo-register, a register in\n\
software to write and test programs against.")

include(CPack)
