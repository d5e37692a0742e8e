include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${STAGE} ${PREFIX})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${STAGE})
file(RENAME ${STAGE} ${PREFIX})
