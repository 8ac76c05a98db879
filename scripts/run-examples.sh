#!/bin/bash
# Runs every program of some folders; each must end with 0.
set -euo pipefail
wine=$(cd "$(dirname "$0")/../cmake" && pwd)/wine-run
for folder; do
    for program in "$folder"/*.exe; do
        [ -e "$program" ] || { echo "no programs in $folder"; exit 1; }
        echo "---- $(basename "$program")"
        "$wine" "$program"
    done
done
