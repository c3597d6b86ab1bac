#!/usr/bin/env bash
# quarn check: networks without fault, and one of each.
# usage: check.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

command=check whole=yes
# expect_fault NET FAULT ...: each fault, and no other, in a network of these items.
expect_fault() {
    printf '%s\n' 'node a { states = ("yes" "no"); } potential (a) { data = (0.25 0.75); }' "$1" >"$work/tested.net"
    shift
    expect 1 "$(printf "$work/tested.net: %s\n" "$@")" "$work/tested.net"
}

for example in chest_clinic oil_wildcatter car_insurance; do expect 0 '' "$2/examples/$example.net"; done
expect 1 "$2/examples/waste_incinerator.net: node waste: the probabilities sum to 7" "$2/examples/waste_incinerator.net"
expect_fault 'node b { states = ("u" "v"); } potential (b | a) { data = (0.3333333 0.6666666 1 2); }' \
    'node b: the probabilities given a=no sum to 3'
expect_fault 'node b { states = ("u" "v"); } potential (b | a) { data = (1 0 0 0); }' \
    'node b: the probabilities given a=no sum to 0' 'node b: state v cannot occur'
expect_fault 'node b { states = ("u" "v"); } node c { states = ("x" "x"); }
    potential (c | b a) { data = (1 0 1 0 0 1 1 0); } potential (b | a) { data = (1 0 1 0); }' \
    'node b: state v cannot occur' 'node c: state #1 cannot occur'
expect_fault 'node b { states = ("u" "v"); } potential (b | a) { data = (1e400 1 0.5 0.5); }' \
    'node b: the probability of u given a=yes is infinite'
expect_fault 'continuous node x { } continuous node y { } potential (y | a x) { data = (normal(1, 1) normal(x, 0)); }' \
    'node x: there are no potential data'
expect_fault 'decision d { states = ("u" "v"); } utility u { } utility v { } potential (u | d) { data = (0 0); }
    node b { states = ("u" "v"); } node c { states = ("u" "v"); } potential (c | b) { data = (1 0 1 1); }
    potential (v | d) { model_nodes = (); model_data = (1); }
    function f { } function g { } potential (g | f) { model_nodes = (); model_data = (f); }' \
    'node v: there are no potential data' 'node b: there are no potential data' \
    'node c: the probabilities given b=v sum to 2' 'node f: the function has no model'
expect_fault 'decision d { states = ("u" "v"); } utility u { } potential (u | d) { data = (0 1e400); }' \
    'node u: the utility given d=v is infinite'

printf 'node a { states = ("u" "v"); } node b { states = ("u" "v"); } potential (a b) { data = (1 2 3 4); }' >"$work/chain.net"
expect 0 '' "$work/chain.net"
sed 's/1 2 3 4/1 2 -3 4/' "$work/chain.net" >"$work/unusable.net"
expect 1 "$work/unusable.net:1: warning: negative value in probability potential
$work/unusable.net: a potential of several nodes has negative numbers or leaves no state possible" "$work/unusable.net"
printf 'node a { states = ("u" "v"); }\n' >"$work/bare.net"
expect 1 "$work/bare.net: node a: there are no potential data" "$work/bare.net"

# --- What cannot be read, and wrong command lines
printf 'net { }\nnode a { states = ("u" "v"); }\npotential (a) { }\nnode b { label = 1; }\n' >"$work/broken.net"
expect 1 "$work/broken.net:3: warning: no potential data specified
$work/broken.net:4: string expected" "$work/broken.net"
expect 1 "quarn: $work/none.net: cannot be read: No such file or directory" "$work/none.net"
expect 2 'quarn: MODEL is required'

[ $failures -eq 0 ]
