#!/bin/bash
# Runs the benchmark program and prints its table. The figures stay in build/bench.json. Ends with a status other than 0
# when the program or a row of it failed.
#
#   run.sh BUILD_FOLDER [FILTER [OPTION OF TABLE.PY...]]      without a filter, or with an empty one: all rows
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
json=$root/build/bench.json
rm -f "$json"
# CPU times move in steps of 10 ms under Wine, so each measurement must last. Repetitions are interleaved: what else
# the machine does then hits all rivals alike. The file has each of them, so that none that failed goes unseen.
"$root/cmake/wine-run" "$1/bin/tarn_bench.exe" \
    --benchmark_filter="${2:-.}" --benchmark_repetitions="${REPETITIONS:-5}" \
    --benchmark_enable_random_interleaving=true --benchmark_min_time="${MIN_TIME:-0.1}" \
    --benchmark_context=load="$(cut -d' ' -f1 /proc/loadavg)" \
    --benchmark_display_aggregates_only=true --benchmark_out="Z:$json" --benchmark_out_format=json \
    >"$root/build/log/bench.log" 2>&1 || { tail -n 40 "$root/build/log/bench.log"; exit 1; }
[ -n "${2-}" ] || set -- "$1" "" --whole "${@:3}"
python3 "$root/bench/table.py" "$json" "${@:3}"
