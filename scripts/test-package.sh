#!/bin/bash
# Makes a zip of the tests that a person can unpack and run on a Windows machine, and runs what it unpacks to under Wine, in a
# folder that has nothing to do with this one.
#
#   test-package.sh BUILD ZIP
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=$(realpath "$1")
zip=$(realpath -m "$2")
wine=$here/cmake/wine-run
version=$(sed -n 's/^project(tarnlib VERSION \([0-9.]*\).*/\1/p' "$here/CMakeLists.txt")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
folder=tarnlib-tests-$version
target=$work/$folder
mkdir -p "$target"

cp -r "$build"/bin/*.dll "$build"/bin/plugins "$build"/bin/{ending,tarn,tarn_tests,tarn_seam_tests}.exe "$target"
cp -r "$here/tests/data" "$target"
cp "$build/tests/utf8_strings.txt" "$target/data"
# They name functions by their exports; the symbols stay with the build.
find "$target" -name '*.exe' -o -name '*.dll' | xargs i686-w64-mingw32-strip -s
# The command interpreter takes lines that end in CR LF alone.
sed "s/@version@/$version, built from $(git -C "$here" rev-parse --short HEAD)/; s/\$/\r/" "$here/tests/package/run-tests.cmd" \
    >"$target/run-tests.cmd"
for program in tarn_tests tarn_seam_tests; do
    # Suites without their numbers and prefixes, and without those that want code page 932.
    "$wine" "$target/$program.exe" --gtest_list_tests | tr -d '\r' | sed -n 's/^\([A-Za-z0-9_/]*\)\.\( .*\)\?$/\1/p' |
        sed 's,/[0-9]*$,,; s,.*/,,' | grep -v '^Cp932' | sort -u | sed 's/$/\r/' >"$target/$program.suites"
    [ -s "$target/$program.suites" ]
done

mkdir -p "$(dirname "$zip")"
rm -f "$zip"
(cd "$work" && cmake -E tar cf "$zip" --format=zip "$folder")
echo "$zip: $(du -k "$zip" | cut -f1) KiB"

mkdir "$work/unpacked" && cd "$work/unpacked"
cmake -E tar xf "$zip"
runs=$(($(cat "$folder"/*.suites | wc -l) + 1)) # and all once more above 2 GiB
"$wine" cmd /c "$folder\\run-tests.cmd" || true
cat "$folder/results/summary.txt"
grep -q "^$runs runs passed, 0 failed" "$folder/results/summary.txt"
