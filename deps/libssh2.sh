#!/bin/bash
# Cross-builds libssh2 as a shared library over the shared OpenSSL, and prints its prefix.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

version=1.10.0
openssl=$("$here/openssl.sh")
weak="-DOPENSSL_NO_RIPEMD -DOPENSSL_NO_DSA"

build() {
    fetch_source libssh2
    # EVP_aes_128_ctr is there, but its check does not find it. RIPEMD-160 is not in our OpenSSL, and DSA keys
    # are too short for anybody to be sure of a server by them.
    cmake -G Ninja -S source -B build -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_C_FLAGS="-w -D_WINDLL -DLIBSSH2_LIBRARY $weak" -DHAVE_EVP_AES_128_CTR=1 \
        -DCMAKE_SHARED_LINKER_FLAGS="-Wl,--exclude-libs,ALL -Wl,--no-insert-timestamp -static-libgcc" \
        -DBUILD_SHARED_LIBS=ON -DBUILD_EXAMPLES=OFF -DBUILD_TESTING=OFF -DENABLE_ZLIB_COMPRESSION=OFF \
        -DCRYPTO_BACKEND=OpenSSL -DOPENSSL_ROOT_DIR="$openssl" -DOPENSSL_INCLUDE_DIR="$openssl/include" \
        -DLIB_EAY="$openssl/lib/libcrypto.dll.a" -DSSL_EAY="$openssl/lib/libssl.dll.a"
    cmake --build build --target libssh2
    mkdir -p installed/bin installed/lib installed/include
    i686-w64-mingw32-strip -s -o installed/bin/libssh2.dll "build/src/libssh2.dll"
    cp build/src/liblibssh2.dll.a installed/lib/libssh2.dll.a
    cp source/include/libssh2*.h installed/include
    cp source/COPYING installed # it goes into the SDK
}

build_once libssh2 $version bin/libssh2.dll "libssh2 $version"
