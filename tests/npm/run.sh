#!/usr/bin/env bash
# run.sh CHECK.mjs FOLDER [ARGUMENTS...]: runs a check with node, its packages installed in FOLDER.
# Exit status 77: skipped, with a line that says why.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
check=$1 folder=$2
shift 2
for program in node npm; do
    command -v "$program" >/dev/null || { echo "SKIPPED: $program is not installed"; exit 77; }
done
mkdir -p "$folder"
(
    # Several checks share the folder.
    flock 9
    if ! cmp -s "$here/package.json" "$folder/installed.json"; then
        cp "$here/package.json" "$here/package-lock.json" "$folder/" 2>/dev/null
        (cd "$folder" && timeout 300 npm ci --no-audit --no-fund --silent) >"$folder/npm.log" 2>&1 || exit 1
        cp "$here/package.json" "$folder/installed.json"
    fi
) 9>"$folder/.lock" || { echo "SKIPPED: npm could not install the packages (no network?): $(tail -1 "$folder/npm.log")"; exit 77; }
cp "$here"/*.mjs "$folder/"
cd "$folder" && exec node "$check" "$@"
