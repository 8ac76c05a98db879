#!/bin/bash
# Cross-builds SQLite as a static library, a rival in the benchmarks, and prints its prefix.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

version=3.40

build() {
    fetch_source sqlite3
    # All of it in one file, which programs of this machine make.
    (cd source && ./configure --disable-shared && env -u MAKEFLAGS -u MAKELEVEL make sqlite3.c)
    mkdir -p installed/lib installed/include
    i686-w64-mingw32-gcc-posix -O2 -msse2 -DSQLITE_THREADSAFE=0 -c source/sqlite3.c -o sqlite3.o
    i686-w64-mingw32-ar rcs installed/lib/libsqlite3.a sqlite3.o
    cp source/sqlite3.h installed/include
}

build_once sqlite $version lib/libsqlite3.a "SQLite $version"
