#!/bin/sh
# Checks that a library built without the display needs zlib, libxml2 and the C and C++ run-times, with
# what these need in turn, and no more:
#
#   scripts/check_dependencies.sh build/libkestrane.so
set -eu
library=$1

# What ldd would list for a library, the loader's own pages left out, one plain name a line.
needs() {
    LC_ALL=C ldd "$1" | sed -n 's/^[[:space:]]*\([^[:space:]]*\).*/\1/p' | sed 's:.*/::' |
        grep -v '^linux-vdso' | sort -u
}

path_of() {
    LC_ALL=C ldd "$library" | sed -n "s/^[[:space:]]*$1[^[:space:]]* => \([^[:space:]]*\).*/\1/p"
}

allowed='libxml2.so libz.so libstdc++.so libgcc_s.so libm.so libc.so ld-linux'
for name in 'libxml2\.so' 'libz\.so' 'libstdc++\.so'; do
    path=$(path_of "$name")
    if [ -n "$path" ]; then
        allowed="$allowed $(needs "$path")"
    fi
done

status=0
for name in $(needs "$library"); do
    known=no
    for prefix in $allowed; do
        case $name in "$prefix"*) known=yes ;; esac
    done
    echo "$name"
    if [ "$known" = no ]; then
        echo "not allowed: $name"
        status=1
    fi
done
exit $status
