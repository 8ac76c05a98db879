#!/bin/bash
# Runs every program of a folder; each must end with 0.
set -euo pipefail
for program in "$1"/*.exe; do
    [ -e "$program" ] || { echo "no programs in $1"; exit 1; }
    echo "---- $(basename "$program")"
    "$(dirname "$0")/wine-run" "$program"
done
