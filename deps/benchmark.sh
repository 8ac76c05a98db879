#!/bin/bash
# Cross-builds Google Benchmark and prints the folder of its CMake package, which finds its files from where it stands.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

version=1.7.1
package=lib/cmake/benchmark

build() {
    # The distribution's patches are for link-time optimisation and shared libraries: not needed.
    fetch_source benchmark --skip-patches
    cmake -G Ninja -S source -B build -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
        -DGIT_VERSION=$version -DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_GTEST_TESTS=OFF \
        -DBENCHMARK_ENABLE_WERROR=OFF -DCMAKE_INSTALL_PREFIX="$PWD/installed"
    cmake --build build --target install
}

prefix=$(build_once benchmark $version $package "Google Benchmark $version")
echo "$prefix/$package"
