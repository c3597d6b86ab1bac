#!/usr/bin/env bash
# quarn compile: the numbers of small networks, tables that are too large, both outputs, every way to fail.
# usage: compile.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

command=compile whole=yes

lines() {  # METHOD NODES LINKS COMPONENTS CLIQUES LARGEST ITS_SIZE TOTAL BYTES FILL_INS COMPILE_TIME
    printf 'method %s\nnodes %s\nlinks %s\ncomponents %s\ncliques %s\nlargest clique %s\nlargest table size %s
total table size %s\nbytes %s\nfill in links %s\nread ms T\ntriangulate ms T\ncompile ms %s' "$@"
}

for method in 'minimum clique size' 'minimum clique weight' 'minimum fill-in size' 'minimum fill-in weight' \
    'minimal separators: total weight' 'the best greedy'; do
    name=$(sed -E 's/^(minimum|the|.*:) //; s/ /-/g' <<<"$method")
    expect 0 "$(lines "$name" 8 8 1 6 bronchitis,either,dyspnoea 8 40 320 1 T)" "$clinic" -m "$name" --log "$work/log"
    grep -q '^Elimination sequence:' "$work/log" && grep -q "${method%:*}" "$work/log" || fail "line $LINENO"
done
expect 0 "$(lines best-greedy 8 8 1 6 bronchitis,either,dyspnoea 8 40 320 1 T)" "$clinic"
printf 'node %s { states = ("x" "y" "z"); }\n' a b c >"$work/apart.net"
echo 'potential (c | a) { }' >>"$work/apart.net"
whole='' expect 0 "$(lines best-greedy 3 1 2 2 a,c 9 12 96 0 T)" "$work/apart.net"
! command -v python3 >/dev/null || "$quarn" compile "$clinic" --json | python3 -c '
import json, sys
result = json.load(sys.stdin)
assert all(result.pop(step + "_ms") >= 0 for step in ("read", "triangulate", "compile"))
assert result == {
    "model": sys.argv[1], "method": "best-greedy", "nodes": 8, "links": 8, "components": 1, "cliques": 6,
    "largest_clique": ["bronchitis", "either", "dyspnoea"], "largest_table_size": 8, "total_table_size": 40,
    "bytes": 320, "fill_in_links": 1}' "$clinic" || fail "line $LINENO"

# --- What cannot be done, and wrong command lines. Parents of one child for each pair are a clique.
for i in {0..8}; do
    printf 'node n%d { states = (%s); }\n' "$i" "$(printf '"s%d" ' {1..128})"
    for ((j = 0; j < i; ++j)); do echo "node c${j}_$i { } potential (c${j}_$i | n$j n$i) { }"; done
done >"$work/large.net"
memory='out of memory: the tables of the network are too large'
whole=''
expect 1 "$(lines best-greedy 45 72 1 37 n0,n1,n2,n3,n4,n5,n6,n7,n8 9223372036854775808 9223372036855365632 \
    'too large' 0 'too large')" "$work/large.net"
expect 1 "quarn: $work/large.net: $memory" "$work/large.net"
echo 'utility U { } function F { } potential (U) { data = (3); }' >"$work/nothing.net"
expect 1 "quarn: $work/nothing.net: the network has no chance or decision nodes to compute" "$work/nothing.net"
expect 1 "quarn: $work/none.net: cannot be read: No such file or directory" "$work/none.net"
expect 1 "quarn: $work/none/log: cannot be written" "$clinic" --log "$work/none/log"
[ ! -w /dev/full ] || expect 1 'quarn: /dev/full: cannot be written' "$clinic" --log /dev/full
expect 2 'quarn: unknown method greedy' "$clinic" --method greedy

[ $failures -eq 0 ]
