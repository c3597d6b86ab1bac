#!/usr/bin/env bash
# The library keeps no writable state of its own but the error code of each thread: two domains can be used in two
# threads at once.
# usage: no_writable_globals.sh ARCHIVE
set -euo pipefail
export LC_ALL=C
archive=$1

# Lines of objdump: value, flags, section, size, name. Allowed are the error code, in the data of threads (.tbss), what is
# only written by the loader (.data.rel.ro) and the exception personality's indirection (DW.ref).
symbols=$(objdump -t "$archive")
grep -q '\.text' <<<"$symbols" || { echo "$archive: no code in it"; exit 1; }
writable=$(awk -F'\t' '
    /^[^ ]+: +file format/ { object = $1; sub(/:.*/, "", object) }
    NF == 2 {
        n = split($1, left, " "); section = left[n]
        size = $2; sub(/ .*/, "", size)
        name = $2; sub(/^[^ ]+ +(\.hidden )?/, "", name)
        if (section ~ /^(\.[lt]?data|\.[lt]?bss|\*COM\*)/ && section !~ /^\.data\.rel\.ro/ && name !~ /^DW\.ref\./ &&
            !(section == ".tbss" && name == "_ZN5quarn12_GLOBAL__N_112thread_errorE") && size !~ /^0+$/)
            print "  " object ": " name " (" section ")"
    }' <<<"$symbols")
if [ -n "$writable" ]; then
    echo "writable data:"
    c++filt <<<"$writable"
    exit 1
fi
