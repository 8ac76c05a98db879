#!/bin/bash
# Builds examples/ as a client would: against an installed SDK, by nothing but its folder.
#
#   build-examples.sh SDK_FOLDER BUILD_FOLDER
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
sdk=$(cd "$1" && pwd)
cmake -G Ninja -S "$root/examples" -B "$2" -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-i686.cmake" \
    -DCMAKE_BUILD_TYPE=Release -Dtarnlib_DIR="$sdk/lib/cmake/tarnlib"
cmake --build "$2"
cp "$sdk"/bin/*.dll "$2"
