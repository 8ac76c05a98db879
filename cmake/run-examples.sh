#!/bin/bash
# Runs every program of some folders; each must end with 0.
set -euo pipefail
for folder; do
    for program in "$folder"/*.exe; do
        [ -e "$program" ] || { echo "no programs in $folder"; exit 1; }
        echo "---- $(basename "$program")"
        "$(dirname "$0")/wine-run" "$program"
    done
done
