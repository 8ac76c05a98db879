#!/bin/bash
# Cross-builds Abseil as static libraries, a rival in the benchmarks, and prints its prefix.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

version=20220623

build() {
    fetch_source abseil
    # The language of the program that takes it, by which some of its types differ.
    cmake -G Ninja -S source -B build -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_STANDARD=20 -DCMAKE_CXX_FLAGS=-w -DBUILD_TESTING=OFF
    # What the rows need, with what that needs.
    cmake --build build --target strings str_format_internal time synchronization raw_hash_set hash
    mkdir -p installed/lib installed/include
    find build -name '*.a' -exec cp -t installed/lib {} +
    (cd source && find absl \( -name '*.h' -o -name '*.inc' \) -exec cp --parents -t ../installed/include {} +)
}

build_once abseil $version lib/libabsl_strings.a "Abseil $version (two minutes)"
