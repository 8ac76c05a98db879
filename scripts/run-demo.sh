#!/bin/bash
# The library at work on real input: the texts of examples/texts become UTF-8 in build/demo.
#
#   run-demo.sh BUILD_FOLDER
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
tarn=$build/bin/tarn.exe
dll=$build/bin/tarnlib-5-0.dll
texts=examples/texts
converted=build/demo

if [ ! -e "$tarn" ]; then
    echo "no command-line tool in $build/bin" >&2
    exit 1
fi
mkdir -p "$converted"

row() { printf '%-20s %-9s %7s %7s %7s %6s %7s %5s\n' "$@"; }

# What the tool reports of one file, as a row, and below it the lines about what could not be converted.
# Status 1 is an answer, not a failure: some of the texts are damaged.
convert() {
    local file=$1 codeset=$2 report status=0
    report=$(cmake/wine-run "$tarn" text -from "$codeset" -to utf-8 -file "$texts/$file" -out "$converted/$file" \
        </dev/null | tr -d '\r') || status=$?
    if [ "$status" -gt 1 ]; then
        echo "tarn failed on $file (status $status)" >&2
        exit 1
    fi
    figure() { sed -n "s/^$1: *//p" <<<"$report"; }
    row "$file" "$codeset" "$(figure 'bytes read')" "$(figure 'code units')" "$(figure characters)" \
        "$(figure words)" "$(figure 'bytes made')" "$(figure 'not converted')"
    sed -n '/^not converted/,$p' <<<"$report" | sed -n '2,$s/^/    /p'
}

row file "code set" bytes units chars words "UTF-8" "lost"
while read -r file codeset _; do
    case $file in '' | '#'*) continue ;; esac
    convert "$file" "$codeset"
done <$texts/manifest.txt

# A line in a log that a mask lets through, and an instant as two zones see it.
tool() { cmake/wine-run "$tarn" "$@" </dev/null | tr -d '\r'; }
echo
rm -rf "$converted/logs"
tool trace -level 6 -text "converted the example texts" -trace m -loggingPath "Z:$PWD/$converted/logs" >/dev/null
echo "log        $(cat "$converted"/logs/*.log)"
instant=2024-03-31T00:59:59.5Z
central_europe=CET,-60,CEST,-120,M3.5.0/02:00,M10.5.0/03:00
echo "date       $instant is $(tool date -parse $instant -zone $central_europe) in Berlin," \
    "a second later $(tool date -parse $instant -zone $central_europe -add 1s)"
echo "config     $(tool config -file examples/config/mailer.ini -section server | paste -sd' ')," \
    "Production is at $(tool config -file examples/config/landscape.xml -xml -section Production -key MSSrvName)"
echo "           Łódź is at $(tool config -file examples/config/landscape.xml -xml -section "Łódź 本番" -key Server)"
tool files -copy $texts/japanese-utf8.txt -to "$converted/枕草子 😀.txt" -overwrite
echo "files     $(tool files -list "$converted" -pattern '枕*')"
echo "           $(tool files -size "$converted") bytes in $converted"

echo
echo "library    $dll ($(stat -c %s "$dll") bytes)"
echo "tool       $tarn, through these of the library's headers:"
ninja -C "$build" -t deps | sed -n '/^tools\//,/^$/p' | grep -o 'iface/tarnlib/[A-Za-z0-9]*\.h' |
    sort -u | sed 's|iface/||' | paste -sd' ' | fold -s -w 90 | sed 's/^/           /'
echo "converted  $converted"
