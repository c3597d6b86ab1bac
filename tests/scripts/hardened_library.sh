#!/usr/bin/env bash
# The library needs the C and C++ runtime and zlib only, has no executable stack and is bound and read-only after loading.
# usage: hardened_library.sh LIBRARY
set -euo pipefail
export LC_ALL=C
library=$1
failed=0

complain() {
    echo "$library: $1"
    failed=1
}

dynamic=$(readelf -dW "$library")
segments=$(readelf -lW "$library")

needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
[ -n "$needed" ] || complain "needs no library at all: not the library that was meant?"
for name in $needed; do
    case $name in
        libstdc++.so.* | libgcc_s.so.* | libm.so.* | libc.so.* | libpthread.so.* | libz.so.* | ld-linux*) ;;
        *) complain "needs $name" ;;
    esac
done

stack=$(awk '$1 == "GNU_STACK" { print $7 }' <<<"$segments")
[ "$stack" = RW ] || complain "stack flags are '$stack', not RW"
grep -q GNU_RELRO <<<"$segments" || complain "no RELRO segment"
grep -Eq 'BIND_NOW|FLAGS_1.*NOW' <<<"$dynamic" || complain "not bound at load time"
! grep -q TEXTREL <<<"$dynamic" || complain "has relocations in its code"
exit $failed
