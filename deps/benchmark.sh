#!/bin/bash
# Cross-builds Google Benchmark from Debian's source package into the cache, and prints the folder of its CMake package.
# The folder is named by version, recipe and compiler, so that a change of any of them builds anew.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/apt.sh"

version=1.7.1
recipe="$here/benchmark.sh $here/../cmake/mingw-w64-i686.cmake"
key=$({ cat $recipe; i686-w64-mingw32-g++-posix --version; } | sha256sum | cut -c1-12)
prefix=$tarn_cache/benchmark-$version-$key
log=$tarn_cache/benchmark.log
package=$prefix/lib/cmake/benchmark

build() {
    local work=$tarn_cache/benchmark-work
    rm -rf "$work"
    mkdir -p "$work"
    cd "$work"
    use_main_suite
    apt-get "${apt_main[@]}" -q source --download-only benchmark
    # The distribution's patches are for link-time optimisation and shared libraries: not needed.
    dpkg-source --no-check --skip-patches -x benchmark_*.dsc source
    cmake -G Ninja -S source -B build -DCMAKE_TOOLCHAIN_FILE="$here/../cmake/mingw-w64-i686.cmake" \
        -DCMAKE_BUILD_TYPE=Release \
        -DGIT_VERSION=$version -DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_GTEST_TESTS=OFF \
        -DBENCHMARK_ENABLE_WERROR=OFF -DCMAKE_INSTALL_PREFIX="$work/installed"
    cmake --build build --target install
    # The package finds its files from where it stands, so it can move; moving last keeps half a build out.
    rm -rf "$prefix"
    mv installed "$prefix"
    rm -rf "$work"
}

mkdir -p "$tarn_cache"
exec 8>"$tarn_cache/.benchmark.lock"
flock 8 # one build for all checkouts
if [ ! -e "$package" ]; then
    echo "building Google Benchmark $version" >&2
    # Not as a condition: there the shell would go on after a step that failed.
    set +e
    (set -e; build) >"$log" 2>&1
    status=$?
    set -e
    if [ $status -ne 0 ] || [ ! -e "$package" ]; then
        echo "Google Benchmark could not be fetched or built; the end of $log:" >&2
        tail -n 40 "$log" >&2
        exit 1
    fi
fi
echo "$package"
