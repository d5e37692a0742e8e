#!/bin/sh
# Installs the Debian packages that are missing. With them all in place it needs neither the network
# nor root, and takes no time.
#
#   scripts/setup.sh          what ./run-demo and ./run-tests need
#   scripts/setup.sh check    what .ci/run needs as well
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)

kinds=build
if [ "${1-}" = check ]; then
    kinds='build check'
fi

if ! command -v dpkg-query >/dev/null 2>&1; then
    echo "This is not a Debian system: install the counterparts of scripts/packages.txt yourself." >&2
    exit 0
fi

missing=''
for kind in $kinds; do
    for package in $(sed -n "s/^$kind //p" "$here/packages.txt"); do
        state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
        if [ "$state" != installed ]; then
            missing="$missing $package"
        fi
    done
done
if [ -z "$missing" ]; then
    exit 0
fi

echo "Installing:$missing"
as_root=''
if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null 2>&1; then
        echo "These packages are missing and there is no sudo. As root: apt-get install$missing" >&2
        exit 1
    fi
    as_root=sudo
fi
# Word splitting is wanted below: a list of packages, and no command at all for root.
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -q --no-install-recommends $missing
