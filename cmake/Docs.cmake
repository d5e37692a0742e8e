# `cmake --build build --target docs` writes the reference of the public header into build/docs/html.
find_program(KESTRANE_DOXYGEN doxygen)
mark_as_advanced(KESTRANE_DOXYGEN)
if(KESTRANE_DOXYGEN)
    add_custom_target(
        docs
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/docs
        COMMAND ${CMAKE_COMMAND} -E env KESTRANE_VERSION=${PROJECT_VERSION}
                KESTRANE_DOCS=${PROJECT_BINARY_DIR}/docs ${KESTRANE_DOXYGEN} Doxyfile
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "Reference of the public header: ${PROJECT_BINARY_DIR}/docs/html/index.html"
        VERBATIM)
endif()
