#!/bin/bash
# Installs the Debian packages that are missing for the named purposes. With everything there it takes milliseconds.
#
#   deps/install.sh PURPOSE...      PURPOSE: build test servers sdk bench check tidy coverage
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/apt.sh"

declare -A packages=(
    [build]="cmake ninja-build g++-mingw-w64-i686-posix libz-mingw-w64-dev wine wine32:i386 dpkg-dev"
    [test]="curl googletest iproute2 locales nodejs openssl python3 tzdata"
    [servers]="curl iproute2 python3"
    [sdk]="python3"
    [bench]="libfmt-dev libspdlog-dev libutfcpp-dev dpkg-dev python3 gcc libc6-dev make tcl"
    [check]="clang-format-14 python3 git"
    [tidy]="clang-tidy-19 python3"
    [coverage]="gcovr"
    [newer-wine]="debootstrap cmake"
)

missing=()
for purpose; do
    [ -n "${packages[$purpose]-}" ] || { echo "deps/install.sh: unknown purpose $purpose" >&2; exit 2; }
    for package in ${packages[$purpose]}; do
        is_installed "$package" || missing+=("$package")
    done
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "installing: ${missing[*]}"
case " ${missing[*]} " in
*:i386*) as_root dpkg --add-architecture i386 ;;
esac
install_packages "${missing[@]}"
