#!/bin/bash
# clang-tidy over our sources with the compile commands of a build folder.
#
#   clang-tidy.sh BUILD_FOLDER [FILE...]     without files: all of src, platform, examples and tools
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
shift
shopt -s globstar
[ $# -gt 0 ] || set -- {src,platform,examples,tools}/**/*.cpp
gcc=$(dirname "$(i686-w64-mingw32-g++-posix -print-libgcc-file-name)")/include
options=(
    --extra-arg-before=--target=i686-w64-mingw32
    --extra-arg=-nostdlibinc --extra-arg=-nostdinc++
    --extra-arg=-isystem"$gcc/c++" --extra-arg=-isystem"$gcc/c++/i686-w64-mingw32"
    --extra-arg=-isystem"$gcc/c++/backward"
    --extra-arg=-idirafter/usr/i686-w64-mingw32/include
    --extra-arg=-Wno-unknown-warning-option --extra-arg=-Wno-ignored-optimization-argument
)
printf '%s\n' "$@" | xargs -P "$(nproc)" -n 4 clang-tidy-19 -p "$build" --quiet "${options[@]}"
