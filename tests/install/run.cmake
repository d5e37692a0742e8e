# run(COMMAND...) runs a command and stops the test with its output unless it ends with 0; run_expecting
# takes the exit status to expect first. Both leave what was printed in `output`.
function(run_expecting status)
    execute_process(
        COMMAND ${ARGN}
        RESULT_VARIABLE result
        OUTPUT_VARIABLE out
        ERROR_VARIABLE err)
    if(NOT result STREQUAL status)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command}\nended with ${result}, not ${status}\n${out}${err}")
    endif()
    set(output "${out}${err}" PARENT_SCOPE)
endfunction()

macro(run)
    run_expecting(0 ${ARGN})
endmacro()

# What both hosts print.
function(expect_answer text)
    if(NOT text MATCHES "1 collision between box [0-9]+ and sphere [0-9]+")
        message(FATAL_ERROR "The host printed something else:\n${text}")
    endif()
endfunction()
