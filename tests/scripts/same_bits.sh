#!/usr/bin/env bash
# All results are the same to the last bit: in every run, for every number of threads, and however much the compiler
# optimised. Networks other than those in the source are in NETWORKS, if anywhere; the largest takes too long.
# usage: same_bits.sh PROGRAM SOURCE_DIR NETWORKS WORK_DIR LIBRARY_FOLDER LIBRARY_FOLDER...
set -euo pipefail
program=$1 source_dir=$2 networks=$3 work=$4
shift 4
export LC_ALL=C

files=("$source_dir"/examples/*.net "$source_dir"/fuzz/corpus/net/*.net)
if [ -d "$networks" ]; then
    mapfile -t more < <(find -L "$networks" -name '*.net' ! -name munin1.net | sort)
    files+=("${more[@]}")
fi
rm -rf "$work"
number=0
for folder in "$@"; do
    number=$((number + 1))
    [ -e "$folder/libquarn.so.0" ] || { echo "no library in $folder"; exit 1; }
    mkdir -p "$work/$number"
    LD_LIBRARY_PATH=$folder "$program" "$work/$number" "${files[@]}" | tee "$work/$number/digest"
    if ! diff -r "$work/1" "$work/$number" >"$work/difference"; then
        echo "$folder: not the same results as $1:"
        head -50 "$work/difference"
        exit 1
    fi
done
[ $number -gt 1 ] || { echo "nothing to compare with"; exit 1; }
echo "${#files[@]} networks, $number times the same"
