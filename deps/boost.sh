#!/bin/bash
# Unpacks the headers of boost, a rival in the benchmarks, and prints their prefix. Nothing of it is compiled.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

version=1.74

build() {
    use_main_suite
    apt-get "${apt_main[@]}" -q download libboost$version-dev
    dpkg-deb -x libboost$version-dev_*.deb unpacked
    mkdir -p installed/include
    mv unpacked/usr/include/boost installed/include
}

build_once boost $version include/boost/version.hpp "boost $version"
