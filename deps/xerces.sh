#!/bin/bash
# Cross-builds Xerces-C as a static library and prints its prefix.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

version=3.2.4

build() {
    # With the distribution's patches: one is against a use after free (CVE-2018-1311).
    fetch_source xerces-c
    # Sections, so that the linker keeps only what is used.
    cmake -G Ninja -S source -B build -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=MinSizeRel \
        -DCMAKE_CXX_STANDARD=17 -DCMAKE_CXX_FLAGS="-w -ffunction-sections -fdata-sections" -DBUILD_SHARED_LIBS=OFF \
        -Dnetwork=OFF -Dtranscoder=windows -Dmessage-loader=inmemory -Dmutex-manager=standard \
        -Dxmlch-type=char16_t -DCMAKE_INSTALL_PREFIX="$PWD/installed"
    cmake --build build --target xerces-c # only the library: no samples, no tests
    cmake -P build/src/cmake_install.cmake # the library and its headers, without the documentation
    cp source/LICENSE source/NOTICE installed # they go into the SDK
}

build_once xerces-c $version lib/libxerces-c.a "Xerces-C $version (two minutes)"
