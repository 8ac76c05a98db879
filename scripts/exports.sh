#!/bin/sh
# The names that a DLL exports, demangled and sorted.
#
#   exports.sh DLL
#   exports.sh --compare LIST DLL     shows what differs from a list, and fails if anything does
names() {
    i686-w64-mingw32-objdump -p "$1" |
        awk '/\[Ordinal\/Name Pointer\] Table/ { inTable = 1; next } inTable && NF == 0 { exit } inTable { print $NF }' |
        i686-w64-mingw32-c++filt -n | LC_ALL=C sort -u
}

if [ "$1" != --compare ]; then
    names "$1"
    exit
fi
names "$3" | diff -u "$2" - && exit 0
echo "The exports differ from $2. If that is intended: make exports" >&2
exit 1
