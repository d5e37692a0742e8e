#!/bin/sh
# Converts a world and opens what comes out in three.js, a reader that is not our own.
#
#   check_with_three.sh PROGRAM FOLDER
#
# Installs three.js into FOLDER by npm, once. Ends with 77, and says why, where node or npm are not
# there or the registry of npm cannot be reached.
set -u

three=0.170.0
node_at_least=18

program=$1
folder=$2
here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
if ! mkdir -p "$folder" || ! cd "$folder"; then
    exit 1
fi

skip() {
    echo "SKIPPED: $1"
    exit 77
}

for tool in node npm; do
    command -v "$tool" >/dev/null 2>&1 || skip "there is no $tool here"
done
version=$(node --version)
major=${version#v}
major=${major%%.*}
[ "$major" -ge "$node_at_least" ] || skip "node is $version, three.js $three needs $node_at_least"

if [ "$(cat node_modules/three/installed 2>/dev/null)" != "$three" ]; then
    echo '{ "private": true }' >package.json
    npm install --no-audit --no-fund --ignore-scripts --fetch-retries=1 --fetch-timeout=60000 \
        --save-exact "three@$three" >npm.log 2>&1 ||
        skip "npm cannot install three@$three: $(grep -m 1 'npm .*code' npm.log)"
    echo "$three" >node_modules/three/installed
fi

"$program" convert "$here/independent.wrl" independent.wrl || exit 1
exec node "$here/check_with_three.mjs" "$folder/node_modules" "$here/independent.wrl" \
    "$folder/independent.wrl"
