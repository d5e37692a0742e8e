# What a host needs, relocatable: the header, the shared library, the package files of CMake and
# pkg-config, the program with its man page, the DTD of scenes, and the examples.
include(CMakePackageConfigHelpers)

set(kestrane_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Kestrane)

set_target_properties(
    kestrane PROPERTIES VERSION ${PROJECT_VERSION}
                        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
target_include_directories(kestrane INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

install(
    TARGETS kestrane
    EXPORT KestraneTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/kestrane.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(
    EXPORT KestraneTargets
    NAMESPACE Kestrane::
    DESTINATION ${kestrane_package_dir})

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/KestraneConfig.cmake.in ${PROJECT_BINARY_DIR}/KestraneConfig.cmake
    INSTALL_DESTINATION ${kestrane_package_dir}
    PATH_VARS CMAKE_INSTALL_DATADIR)
# Below 1.0 a new minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KestraneConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KestraneConfig.cmake
              ${PROJECT_BINARY_DIR}/KestraneConfigVersion.cmake
        DESTINATION ${kestrane_package_dir})

# The prefix is found from the place of kestrane.pc itself, so that an installed copy can be moved.
file(RELATIVE_PATH kestrane_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
     ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" kestrane_pc_to_prefix "${kestrane_pc_to_prefix}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/kestrane.pc.in ${PROJECT_BINARY_DIR}/kestrane.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kestrane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS kestrane_program RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/docs/man/kestrane.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_SOURCE_DIR}/src/scenefiles/kestrane.dtd
        DESTINATION ${CMAKE_INSTALL_DATADIR}/kestrane)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
              ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/docs/conventions.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(
    DIRECTORY ${PROJECT_SOURCE_DIR}/examples/
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
    FILES_MATCHING
    PATTERN "*.xml"
    PATTERN "*.wrl"
    PATTERN "*.dtd"
    PATTERN "*.c"
    PATTERN "*.cpp"
    PATTERN "*.py")
