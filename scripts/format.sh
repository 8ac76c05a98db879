#!/bin/bash
# Formats our sources; with --check only says which are not formatted.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t sources < <(git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp' 2>/dev/null)
# Not a checkout, but an unpacked archive.
[ ${#sources[@]} -gt 0 ] || mapfile -t sources < <(find . -path ./build -prune -o \( -name '*.h' -o -name '*.cpp' \) -print)
[ ${#sources[@]} -gt 0 ] || { echo "no sources found" >&2; exit 1; }
if [ "${1-}" = --check ]; then
    clang-format-14 --dry-run -Werror "${sources[@]}"
else
    clang-format-14 -i "${sources[@]}"
fi
