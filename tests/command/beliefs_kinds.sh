#!/usr/bin/env bash
# quarn beliefs: modes, most probable configurations, choice of nodes, continuous nodes, decisions and utilities.
# usage: beliefs_kinds.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

command=beliefs

{
    for coin in a b c d; do echo "node $coin { states = (\"0\" \"1\"); } potential ($coin) { data = (1 1); }"; done
    echo 'node xor { states = ("0" "1"); } potential (xor | a b) { data = (1 0 0 1 0 1 1 0); }'
    echo 'node same { states = ("0" "1"); } potential (same | xor c) { data = (1 0 0 1 0 1 1 0); }'
} >"$work/coins.net"
cat >"$work/numbers.net" <<'END_OF_NET'
node dice { subtype = number; states = ("" "" ""); state_values = (1 2 6); } potential (dice) { data = (1 1 2); }
function f { } potential (f | dice) { }
END_OF_NET
cat >"$work/sure.net" <<'END_OF_NET'
continuous node x { } potential (x) { data = (normal(1, 0)); }
continuous node y { } potential (y | x) { data = (normal(2 * x, 1)); }
END_OF_NET
sed 's/(1 1)/(1 -1)/' "$oil" >"$work/negative.net"
sed 's/200 0/1e999 0/' "$oil" >"$work/infinite.net"
sed 's/3 - 0.5 \* dust/3 - 1e999 * dust/' "$waste" >"$work/factor.net"
sed 's/normal(-1, 0.3)/normal(-1, 1e999)/' "$waste" >"$work/variance.net"
sed 's/200 0/1e15 0/' "$oil" >"$work/scales.net"

# --- Fast retraction
expect 0 $'xray (Positive X-ray) [evidence: yes]\n yes 0.0702445' "$clinic" -e xray=yes dyspnoea=no --mode fast-retraction
expect 1 'fast retraction is not possible: some evidence excludes states' "$clinic" -e either=no --mode fast-retraction
expect 1 'fast retraction is for discrete chance nodes only, but node efficiency is continuous' \
    "$waste" --mode fast-retraction
expect 2 'unknown mode slow' "$clinic" --mode slow

# --- Most probable configurations: a possible one wherever all are tied, with its probability
expect 0 $'xray = yes [evidence: yes]\ndyspnoea = no [evidence: no]\n\nP(configuration and evidence) 0.0152822' \
    "$clinic" -e dyspnoea=no xray=yes --max
expect 1 '--max is for discrete chance nodes only, but node test is a decision' "$oil" --max
expect 2 '--max goes neither with' "$clinic" --max --top 3
for given in same=0 xor=1 'a=1 same=1' 'c=(0.5,0.5)'; do
    # shellcheck disable=SC2086
    expect 0 "P(configuration and evidence) $([[ $given == *\(* ]] && echo 0.03125 || echo 0.0625)" \
        "$work/coins.net" --max -e $given
    bits=$(sed -nE 's/^[a-z]+ = ([01]).*/\1/p' "$work/out" | tr -d '\n') # of a b c d xor same
    [ $((${bits:0:1} ^ ${bits:1:1})) -eq "${bits:4:1}" ] && [ $((${bits:4:1} ^ ${bits:2:1})) -eq "${bits:5:1}" ] && continue
    fail "given $given: $bits is impossible"
done
expect 0 $'c = 1 [evidence: 0.5 0.75]\n\nP(configuration and evidence) 0.046875' \
    "$work/coins.net" --max -e 'c=(0.5 0.75)' --nodes c

# --- Choice of nodes
expect 0 $'smoking (Smoker)\n yes 0.5\n no 0.5\n\nasia (Visit to Asia)\n yes 0.01\n no 0.99\n\nP(evidence) 1' \
    "$clinic" --nodes smoking,asia -n smoking
expect 1 'there is no node lungs' "$clinic" --nodes asia,lungs
[ "$("$quarn" beliefs "$clinic" -e xray=yes dyspnoea=no --top 2 | sed -n 's/ .*moved/ moved/p')" = \
    $'bronchitis moved 0.256789]\neither moved 0.238867]' ] || fail "line $LINENO"
expect 0 'metals_in_waste (Metals in waste) [moved 1.55681 SD]' "$waste" -e light=1.1 waste=industrial --top 1
for count in -1 0 2.5 x; do expect 2 '--top needs a whole number from 1' "$clinic" --top $count; done

# --- Continuous nodes: the results of the publication
expect 0 $'dust (Dust emission)\n mean 3.03929\n variance 0.592909\n SD 0.770006' "$waste"
seen=(-e waste=industrial light=+1.1 co2=-0.9)
expect 0 $' stable 0.0122528\n unstable 0.987747\n\nfilter (Filter state)\n intact 0.999526' "$waste" "${seen[@]}"
expect 0 $'metals (Emission of metals)\n mean 4.10767\n variance 0.118179\n SD 0.343772' "$waste" "${seen[@]}"
expect 0 $'light (Light penetrability) [evidence: 1.1]\n mean 1.1\n variance 0\n' "$waste" "${seen[@]}"
for value in abc inf 1e999 +-1 '(1 2)'; do
    expect 1 "node light is continuous: its evidence is a number, not $value" "$waste" -e "light=$value"
done
expect 1 'node waste has no state 1.5; its states are #0 industrial, #1 household' "$waste" -e waste=1.5
expect 1 'a continuous node is the only one that the other evidence leaves it' "$work/sure.net" -e x=1
expect 1 'a continuous node is too improbable' "$waste" -e light=1e200
expect 0 $'dice [mean 3.75, SD 2.27761]\n #0 0.25' "$work/numbers.net"

# --- Functions
premium=$2/examples/car_insurance.net
cat >"$work/parts.net" <<'END_OF_NET'
node known { states = ("x" "y"); } potential (known) { data = (1 3); }
discrete function chosen { states = ("0" "1"); } potential (chosen | known) { model_nodes = (known); model_data = ("0", "1"); }
node follows { states = ("u" "v"); } potential (follows | chosen) { data = ((0 1) (0.5 0.5)); }
function after { } potential (after | chosen) { model_nodes = (); model_data = (10 * #chosen); }
function above { } potential (above | known) { model_nodes = (); model_data = (1 / (#known - 1)); }
END_OF_NET
failed='N/A: A probability/density function or a function value could not be computed.'
expect 0 $'deductible (Deductible)\n '"$failed"$'\n\nlong_distance (Nine of ten drive at most)\n value 30\n' "$premium"
expect 0 $'value 364\n\ntariff (Tariff)\n economy 0\n regular 1\n high 0\n' "$premium"
expect 0 $' false 0.25\n true 0.75\n\nincome (Expected income)\n value 273\n\nP(evidence) 1\n' "$premium"
expect 0 $'value 243.2\n\nbasic (Basic premium)\n value 640\n\nP(evidence) 0.06\n' "$premium" -e region=town claims=two -n income,basic
expect 0 'tariff (Tariff) [moved 1]' "$premium" -e claims=two region=town --top 1
expect 0 $'f\n '"$failed" "$work/numbers.net" --nodes f
expect 1 $'known\n x 0.25\n y 0.75\n\nchosen\n '"$failed"$'\n\nfollows\n '"$failed"$'\n\nafter\n '"$failed" "$work/parts.net"
expect 1 $'P(evidence) N/A\nlog P(evidence) N/A\nquarn: '"$work/parts.net: a discrete function, and what depends on it, could" "$work/parts.net"
expect 0 $'follows\n u 0.5\n v 0.5\n\nafter\n value 10\n\nabove\n N/A: Division by zero' "$work/parts.net" -e known=y
expect 0 'P(evidence) 0.75' "$work/parts.net" -e known=y --top 2 # what they were without evidence is not known
! grep -q chosen "$work/out" || fail "line $LINENO"

# --- Decisions and utilities
expect 0 $'test (Seismic test) [decision]\n yes 0.5 EU 0\n no 0.5 EU 10' "$oil"
expect 0 $'drill (Drill for oil) [decision] [evidence: yes]\n yes 1 EU 77.5\n no 0\n' "$oil" -e test=yes seismic=closed drill=yes
expect 0 $'expected 87.5\n\nP(evidence) 0.24\nlog P(evidence) -1.42712\nexpected utility 77.5' \
    "$oil" -e test=yes seismic=closed drill=yes
expect 1 'what is observed of node seismic can depend on decision test, which is open' "$oil" -e seismic=closed
expect 1 'node drill is a decision: its evidence is a state, not a likelihood' "$oil" -e 'drill=(1 2)'
expect 1 'node profit is a utility: it takes no evidence' "$oil" -e profit=3
expect 1 'node test: the probability of no is negative' "$work/negative.net"
expect 1 'node light: the factor of dust is infinite' "$work/factor.net"
expect 1 'node co2: the variance given burning=unstable is infinite' "$work/variance.net"
expect 0 $'test_cost (Cost of the test)\n expected -5\n\nprofit (Profit from drilling)\n expected 1e+14' "$work/scales.net"
expect 1 'node profit: the utility given oil=soaking, drill=yes is infinite' "$work/infinite.net"
expect 0 $'log P(evidence) 0\nexpected utility 0' "$oil" -e test=yes -n profit --top 2

echo 'net { } node a { states = ("u" "v"); } utility g { } potential (g | a) { model_nodes = (a); model_data = (1, 2); }
    potential (a) { model_nodes = (); model_data = (Distribution(1, 3)); }' >"$work/idle.net"
expect 0 "$work/idle.net: warning: node a has a model but no potential data; its states are taken as equally probable
$work/idle.net: warning: node g has a model but no potential data; its utility is taken as 0" "$work/idle.net"

# --- JSON
! command -v python3 >/dev/null || python3 - "$quarn" "$clinic" "$waste" "$oil" "$premium" "$work/parts.net" <<'END_OF_TEST' || fail "line $LINENO"
import json, math, subprocess, sys
def ask(*words):
    return json.loads(subprocess.run([sys.argv[1], "beliefs", *words, "--json"], stdout=subprocess.PIPE).stdout)
clinic, waste, oil, premium, parts = sys.argv[2:]
most = ask(clinic, "--max", "-e", "xray=yes", "--nodes", "xray,cancer")
assert list(most) == ["model", "evidence", "log_p", "p", "configuration", "log_p_configuration", "p_configuration"]
assert most["configuration"] == {"xray": "yes", "cancer": "yes"} and most["evidence"] == {"xray": "yes"}
assert math.isclose(math.exp(most["log_p_configuration"]), most["p_configuration"])
assert ask(clinic, "--mode", "fast-retraction")["mode"] == "fast-retraction"
moved = ask(waste, "-e", "light=1.1", "waste=industrial", "--top", "1")
assert moved["evidence"] == {"waste": "industrial", "light": 1.1}
assert list(moved["beliefs"]["metals_in_waste"]) == ["mean", "variance", "sd", "moved"]
chosen = ask(oil, "-e", "test=yes", "drill=yes")
assert math.isclose(chosen["expected_utility"], 10) and math.isclose(chosen["utilities"]["profit"], 20)
assert chosen["beliefs"]["drill"]["expected_utilities"][1] is None
values = ask(premium)["beliefs"]
assert math.isclose(values["income"].pop("value"), 273) and values["income"] == {}
assert list(values["deductible"]) == ["value", "error"] and values["deductible"]["value"] is None
partly = ask(parts)
assert partly["p"] is None and partly["beliefs"]["known"]["beliefs"] == [0.25, 0.75]
assert partly["beliefs"]["follows"]["beliefs"] is None and partly["beliefs"]["follows"]["error"]
END_OF_TEST

[ $failures -eq 0 ]
