#!/bin/bash
# Cross-builds Xerces-C as a static library from Debian's source package into the cache, and prints its prefix.
# The folder is named by version, recipe and compiler, so that a change of any of them builds anew.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/apt.sh"

version=3.2.4
recipe="$here/xerces.sh $here/../cmake/mingw-w64-i686.cmake"
key=$({ cat $recipe; i686-w64-mingw32-g++-posix --version; } | sha256sum | cut -c1-12)
prefix=$tarn_cache/xerces-c-$version-$key
log=$tarn_cache/xerces-c.log

build() {
    local work=$tarn_cache/xerces-c-work
    # Sections, so that the linker keeps only what is used.
    local flags="-w -ffunction-sections -fdata-sections"
    rm -rf "$work"
    mkdir -p "$work"
    cd "$work"
    use_main_suite
    apt-get "${apt_main[@]}" -q source --download-only xerces-c
    # With the distribution's patches: one is against a use after free (CVE-2018-1311).
    dpkg-source --no-check -x xerces-c_*.dsc source
    cmake -G Ninja -S source -B build -DCMAKE_TOOLCHAIN_FILE="$here/../cmake/mingw-w64-i686.cmake" \
        -DCMAKE_BUILD_TYPE=MinSizeRel -DCMAKE_CXX_STANDARD=17 -DCMAKE_CXX_FLAGS="$flags" -DBUILD_SHARED_LIBS=OFF \
        -Dnetwork=OFF -Dtranscoder=windows -Dmessage-loader=inmemory -Dmutex-manager=standard \
        -Dxmlch-type=char16_t -DCMAKE_INSTALL_PREFIX="$work/installed"
    cmake --build build --target xerces-c # only the library: no samples, no tests
    cmake -P build/src/cmake_install.cmake # the library and its headers, without the documentation
    cp source/LICENSE source/NOTICE installed # they go into the SDK
    # Moving last keeps half a build out.
    rm -rf "$prefix"
    mv installed "$prefix"
    rm -rf "$work"
}

mkdir -p "$tarn_cache"
exec 8>"$tarn_cache/.xerces.lock"
flock 8 # one build for all checkouts
if [ ! -e "$prefix/lib/libxerces-c.a" ]; then
    echo "building Xerces-C $version (two minutes)" >&2
    # Not as a condition: there the shell would go on after a step that failed.
    set +e
    (set -e; build) >"$log" 2>&1
    status=$?
    set -e
    if [ $status -ne 0 ] || [ ! -e "$prefix/lib/libxerces-c.a" ]; then
        echo "Xerces-C could not be fetched or built; the end of $log:" >&2
        tail -n 40 "$log" >&2
        exit 1
    fi
fi
echo "$prefix"
