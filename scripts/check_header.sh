#!/bin/sh
# Compiles the public header alone, as the languages that hosts are written in, with every warning an
# error. The one thing that C of 1990 lacks is bool, which compilers supply with <stdbool.h>.
set -eu

top=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

printf '#include <kestrane.h>\n#include <kestrane.h>\nint main(void) { return KST_OK; }\n' >"$folder/host.c"
cp "$folder/host.c" "$folder/host.cpp"

try() {
    compiler=$1
    source=$2
    shift 2
    if command -v "$compiler" >/dev/null 2>&1; then
        echo "$compiler $*"
        "$compiler" "$@" -pedantic -Wall -Wextra -Werror -I"$top/include" -fsyntax-only \
            "$folder/$source"
    fi
}

try gcc host.c -std=c89
try clang host.c -std=c89 -Wno-c99-extensions
for compiler in gcc clang; do
    try "$compiler" host.c -std=c99 -Wstrict-prototypes
    try "$compiler" host.c -std=c11 -Wstrict-prototypes
done
for compiler in g++ clang++; do
    try "$compiler" host.cpp -std=c++98 -Wno-long-long
    try "$compiler" host.cpp -std=c++20
done
