#!/usr/bin/env bash
# quarn convert: what is written reads back, from and to files and standard streams.
# usage: convert.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

for example in "$2"/examples/*.net; do
    cp "$example" "$work/written.net"
    expect 0 '' convert "$work/written.net" "$work/written.net"
    expect 0 "$("$quarn" beliefs "$example")" beliefs "$work/written.net"
    expect 0 "$(cat "$work/written.net")" convert - - <"$example"
done

printf 'node a { states = ("u" "v"); }\n potential (a) { data = (1e400 1); }\n' >"$work/infinite.net"
expect 1 "$work/infinite.net: " convert "$work/infinite.net" "$work/written.net"
expect 1 '-:1: unexpected token' convert - "$work/written.net" <<<'{'
expect 1 '/: cannot be written' convert "$clinic" /
expect 1 "$work/none.net: cannot be read: No such file or directory" convert "$work/none.net" -
expect 0 "$("$quarn" beliefs "$2/examples/waste_incinerator.net")" beliefs "$work/written.net"  # as it was
expect 2 'OUT is required' convert "$clinic"

[ $failures -eq 0 ]
