#!/usr/bin/env bash
# quarn info: what small networks of every sort consist of, networks too large to compile, what cannot be compiled.
# usage: info.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

command=info

trees() {  # COMPONENTS CLIQUES LARGEST ITS_SIZE TOTAL BYTES
    printf 'components %s\ncliques %s\nlargest clique %s\nlargest table size %s\ntotal table size %s\nbytes to compile %s' "$@"
}

whole=yes
expect 0 "title Chest clinic
nodes 8
 chance, label 8
links 8
 directed 8
most parents 2 (either)
most states 2 (asia)
numbers in tables 36
largest table 8 (either)
$(trees 1 6 bronchitis,either,dyspnoea 8 40 512)" "$clinic"

cat >"$work/all.net" <<'END'
node a { states = ("x" "y" "z"); } node b { states = ("x" "y"); subtype = number; state_values = (1 2); }
node c { states = ("x" "y"); } node d { states = ("x" "y"); }
decision D { states = ("x" "y"); } utility U { } function F { }
potential (a) { data = (1 1 1); }
potential (b c | a) { data = (1 1 1 1 1 1 1 1 1 1 1 1); } potential (c d) { } potential (b d) { }
potential (D | a) { } potential (U | D) { } potential (F | U) { model_nodes = (); model_data = (U + 1); }
END
whole='' expect 0 "nodes 7
 chance, label 3
 chance, number 1
 decision, label 1
 utility 1
 function, real-valued 1
links 8
 directed 3
 informational 1
 functional 1
 undirected 3
chain components 1
most parents 1 (b)
most states 3 (a)
numbers in tables 25
largest table 6 (b)
models 1
without data d,U
$(trees 1 3 a,b,c 12 26 592)" "$work/all.net"

# --- Parents of one child for each pair are a clique: 128 ^ 9 configurations.
for i in {0..8}; do
    printf 'node n%d { states = (%s); }\n' "$i" "$(printf '"s%d" ' {1..128})"
    for ((j = 0; j < i; ++j)); do echo "node c${j}_$i { } potential (c${j}_$i | n$j n$i) { }"; done
done >"$work/large.net"
whole=''
expect 0 "$(trees 1 37 n0,n1,n2,n3,n4,n5,n6,n7,n8 9223372036854775808 9223372036855365632 'too large')" "$work/large.net"
sed "s/states = (/&$(printf '"t%d" ' {1..16})/" "$work/large.net" >"$work/larger.net"
expect 0 'cannot be compiled out of memory: the tables of the network are too large' "$work/larger.net"
echo 'utility U { } function F { } potential (U) { data = (3); }' >"$work/nothing.net"
expect 0 'cannot be compiled there are no chance or decision nodes to compute' "$work/nothing.net"
echo 'node a { states = ("x" "y"); } potential (a) { data = (1e999 1); }' >"$work/infinite.net"
expect 0 'numbers in tables 2' "$work/infinite.net"
expect 1 "quarn: $work/none.net: cannot be read: No such file or directory" "$work/none.net"
echo 'net { }' | expect 1 'quarn: -: the network has no nodes' -

[ $failures -eq 0 ]
