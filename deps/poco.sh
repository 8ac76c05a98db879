#!/bin/bash
# Cross-builds POCO's Foundation as a static library, a rival in the benchmarks, and prints its prefix.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

version=1.11

build() {
    fetch_source poco
    # File systems here tell upper from lower case.
    sed -i 's/<Winsock2\.h>/<winsock2.h>/; s/<Iphlpapi\.h>/<iphlpapi.h>/' source/Foundation/include/Poco/UnWindows.h
    cmake -G Ninja -S source -B build -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_FLAGS=-w -DCMAKE_C_FLAGS=-w -DBUILD_SHARED_LIBS=OFF \
        -DCMAKE_MC_COMPILER="$(command -v i686-w64-mingw32-windmc)" \
        -DENABLE_{ENCODINGS,XML,JSON,MONGODB,DATA_SQLITE,REDIS,UTIL,NET,ZIP,PAGECOMPILER,PAGECOMPILER_FILE2PAGE}=OFF \
        -DENABLE_{ACTIVERECORD,ACTIVERECORD_COMPILER,DATA,TESTS}=OFF
    cmake --build build --target Foundation
    mkdir -p installed/lib installed/include
    find build -name 'libPoco*.a' -exec cp {} installed/lib/libPocoFoundation.a \;
    cp -r source/Foundation/include/Poco installed/include
}

build_once poco $version lib/libPocoFoundation.a "POCO $version (two minutes)"
