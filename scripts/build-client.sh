#!/bin/bash
# Builds a client's CMake project as the client would: with an installed SDK, and by nothing but its folder.
#
#   build-client.sh SDK_FOLDER SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
package=$(cd "$1" && pwd)/lib/cmake/tarnlib
cmake -G Ninja -S "$2" -B "$3" -DCMAKE_TOOLCHAIN_FILE="$package/mingw-w64-i686.cmake" -Dtarnlib_DIR="$package" \
    -DCMAKE_BUILD_TYPE=Release
cmake --build "$3"
