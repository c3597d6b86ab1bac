#!/usr/bin/env bash
# How many cases a second quarn batch answers, with evidence on a tenth of the nodes.
# usage: bench/batch.sh BUILD_DIR [--verify] [MODEL [CASES]]    (default: examples/chest_clinic.net 100000)
# --verify compares all answers with fresh computations in Python.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$1
shift
verify=
if [ "${1-}" = --verify ]; then
    verify=1
    shift
fi
model=${1:-examples/chest_clinic.net}
count=${2:-100000}
quarn=$build/tools/quarn
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

nodes=$("$quarn" sample "$model" -n 0 | tr , '\n' | awk 'NR % 10 == 1' | paste -sd ,)
"$quarn" sample "$model" -n "$count" --nodes "$nodes" -o "$work/cases.csv"
echo "$count cases of $model with evidence on $nodes"
for jobs in 1 2; do
    start=$(date +%s%N)
    "$quarn" batch "$model" "$work/cases.csv" --jobs $jobs -o "$work/$jobs.csv"
    awk -v jobs=$jobs -v count="$count" -v ns=$(($(date +%s%N) - start)) \
        'BEGIN { printf "jobs %d: %.0f rows/s\n", jobs, count / ns * 1e9 }'
done
cmp "$work/1.csv" "$work/2.csv"
if [ -n "$verify" ]; then
    python3 bench/batch_answers.py "$build/src/libquarn.so" "$model" "$work/cases.csv" "$work/1.csv"
fi
