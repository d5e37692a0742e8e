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
if(KESTRANE_SANITIZE)
    target_compile_options(kestrane_flags INTERFACE -fsanitize=${KESTRANE_SANITIZE}
                                                    -fno-sanitize-recover=all
                                                    -fno-omit-frame-pointer -g)
    target_link_options(kestrane_flags INTERFACE -fsanitize=${KESTRANE_SANITIZE})
endif()
