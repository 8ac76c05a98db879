#!/bin/bash
# Cross-builds OpenSSL as shared libraries, one copy for all modules of a process, and prints its prefix.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

# The series; the distribution's source has its latest fixes.
version=3.0

# Nothing from outside changes what it does: no configuration file is read on its own, and no engine is loaded. It does
# not clean up at the exit of a process, where other threads still call it (no-atexit), and stays loaded until then. SHA-1,
# MD5, 3DES, TLS 1.0 and 1.1 stay.
options=(shared no-tests no-autoload-config no-atexit no-engine no-legacy no-uplink no-comp no-ssl3 no-dtls no-srp no-psk
    no-ct no-ts no-cms no-cmp no-gost no-nextprotoneg no-rfc3779 no-bf no-cast no-rc2 no-rc4 no-idea no-seed no-camellia
    no-aria no-sm2 no-sm3 no-sm4 no-whirlpool no-md4 no-mdc2 no-rmd160)

build() {
    fetch_source openssl
    # It tells when it was built: that is when the distribution released it, so that two builds have the same bytes.
    SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l source/debian/changelog -S Timestamp)
    export SOURCE_DATE_EPOCH
    cd source
    patch --reverse -p1 <debian/patches/pic.patch # it is for ELF, and breaks the assembler code of this target
    # The prefix is only compiled in, as the place of certificates and loadable modules: where none but administrators write.
    perl Configure mingw --cross-compile-prefix=i686-w64-mingw32- CC=gcc-posix -Wl,--no-insert-timestamp \
        --prefix="C:/Program Files/OpenSSL" "${options[@]}"
    # The options of a make above this script are not for this one.
    env -u MAKEFLAGS -u MAKELEVEL make -j"${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}" build_libs
    cd ..
    mkdir -p installed/bin installed/lib installed/include/openssl
    for name in libcrypto libssl; do
        i686-w64-mingw32-strip -s -o "installed/bin/$name-3.dll" "source/$name-3.dll"
        cp "source/$name.dll.a" installed/lib
    done
    cp source/include/openssl/*.h installed/include/openssl
    cp source/LICENSE.txt installed # it goes into the SDK
}

build_once openssl $version bin/libssl-3.dll "OpenSSL $version (three minutes)"
