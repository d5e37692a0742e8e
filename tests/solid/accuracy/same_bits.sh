#!/bin/bash
# Builds the collision engine by each compiler that is there, without and with optimisation, and
# compares what the builds answer about the same scenes, bit by bit.
#
#   same_bits.sh [PROGRAM]     PROGRAM: solid_hash of the build under test, compared as well
set -eu

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
src=$here/../../../src
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sources=("$src"/platform/solid/*.cpp)
for name in Convex Distance Engine HashMain Random Spec; do
    sources+=("$here/$name.cpp")
done

status=0
compare() {
    if [ ! -e "$work/first" ]; then
        cp "$1" "$work/first"
        cat "$1"
    elif cmp -s "$1" "$work/first"; then
        echo "the same: $2"
    else
        echo "DIFFERENT: $2"
        cat "$1"
        status=1
    fi
}

if [ $# -gt 0 ]; then
    "$1" >"$work/out"
    compare "$work/out" "$1"
fi
for compiler in g++ clang++; do
    if ! command -v $compiler >/dev/null; then
        continue
    fi
    for level in -O0 -O2; do
        # In parallel as far as there are processors.
        printf '%s\n' "${sources[@]}" |
            xargs -P "$(nproc)" -I{} sh -c \
                '"$1" -std=c++20 "$2" -ffp-contract=off -I"$3" -c "$4" -o "$5/$(basename "$4").o"' \
                sh $compiler $level "$src" {} "$work"
        $compiler "$work"/*.o -o "$work/hash"
        "$work/hash" >"$work/out"
        compare "$work/out" "$compiler $level"
    done
done
exit $status
