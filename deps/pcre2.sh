#!/bin/bash
# Cross-builds PCRE2 as a static library, a rival in the benchmarks, and prints its prefix.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

version=10.42

build() {
    fetch_source pcre2
    cmake -G Ninja -S source -B build -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
        -DPCRE2_SUPPORT_JIT=ON -DPCRE2_BUILD_PCRE2GREP=OFF -DPCRE2_BUILD_TESTS=OFF -DCMAKE_INSTALL_PREFIX="$PWD/installed"
    cmake --build build --target install
}

build_once pcre2 $version lib/libpcre2-8.a "PCRE2 $version"
