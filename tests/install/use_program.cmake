include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

set(examples ${PREFIX}/${DATADIR}/doc/kestrane/examples)
foreach(file ${PREFIX}/${DATADIR}/kestrane/kestrane.dtd ${PREFIX}/${DATADIR}/man/man1/kestrane.1
             ${examples}/kestrane.dtd ${PREFIX}/${DATADIR}/doc/kestrane/README.md)
    if(NOT EXISTS ${file})
        message(FATAL_ERROR "Not installed: ${file}")
    endif()
endforeach()

run(${PREFIX}/bin/kestrane --version)
if(NOT output MATCHES "${VERSION}")
    message(FATAL_ERROR "The program is not of version ${VERSION}: ${output}")
endif()
run(${PREFIX}/bin/kestrane info ${examples}/robot_cell.xml)
