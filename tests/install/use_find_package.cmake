include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

function(configure folder version status)
    file(REMOVE_RECURSE ${folder})
    run_expecting(
        ${status} ${CMAKE_COMMAND} -S ${SOURCE}/host -B ${folder} -G ${GENERATOR}
        -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_C_COMPILER=${CC} -DCMAKE_CXX_COMPILER=${CXX}
        -DKESTRANE_WANTED=${version})
    set(output "${output}" PARENT_SCOPE)
endfunction()

configure(${WORK} ${VERSION} 0)
run(${CMAKE_COMMAND} --build ${WORK})
foreach(language c cxx)
    run(${WORK}/host_${language})
    expect_answer("${output}")
endforeach()

configure(${WORK}_other_version 99.0 1)
if(NOT output MATCHES "99\\.0")
    message(FATAL_ERROR "Another version was refused for another reason:\n${output}")
endif()
