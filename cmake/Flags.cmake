# Compiler flags that every target of the project shares; link to kestrane_flags to get them.
add_library(kestrane_flags INTERFACE)
target_include_directories(kestrane_flags INTERFACE ${PROJECT_SOURCE_DIR}/src
                                                    ${PROJECT_SOURCE_DIR}/include)
# The same answers on every machine and with every compiler: no contraction to fused operations.
target_compile_options(
    kestrane_flags
    INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -ffp-contract=off
              $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
              $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # It sees an overlap in every "text" + std::string.
    target_compile_options(kestrane_flags INTERFACE -Wno-restrict)
endif()
if(KESTRANE_WERROR)
    target_compile_options(kestrane_flags INTERFACE -Werror)
endif()

set(kestrane_sanitizers ${KESTRANE_SANITIZE})
if(KESTRANE_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES Clang)
        message(FATAL_ERROR "KESTRANE_FUZZ needs clang: configure with -DCMAKE_CXX_COMPILER=clang++")
    endif()
    # Coverage everywhere; the fuzzer's own main comes in with the targets of tests/fuzz alone.
    list(PREPEND kestrane_sanitizers fuzzer-no-link)
endif()
if(kestrane_sanitizers)
    list(JOIN kestrane_sanitizers , kestrane_sanitizers)
    target_compile_options(kestrane_flags INTERFACE -fsanitize=${kestrane_sanitizers}
                                                    -fno-sanitize-recover=all
                                                    -fno-omit-frame-pointer -g)
    target_link_options(kestrane_flags INTERFACE -fsanitize=${kestrane_sanitizers})
endif()
