#!/usr/bin/env bash
# quarn beliefs: evidence in all forms, both outputs, every way to fail.
# usage: beliefs.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

complain() { fail "$*"$'\n'"$(cat "$work/out" "$work/err")"; }

# expect STATUS STREAM PATTERN ARGUMENT...: runs quarn and looks for a line that matches in out or err.
expect() {
    local status=$1 stream=$2 pattern=$3 actual
    shift 3
    "$quarn" "$@" >"$work/out" 2>"$work/err" </dev/null
    actual=$?
    [ $actual -eq "$status" ] || complain "quarn $*: status $actual, not $status"
    grep -Eq -- "$pattern" "$work/$stream" || complain "quarn $*: no line matches $pattern"
    if [ "$status" -eq 0 ]; then
        [ -s "$work/out" ] || complain "quarn $*: printed nothing"
    else
        [ ! -s "$work/out" ] || complain "quarn $*: printed a result"
    fi
}

cat >"$work/states.net" <<'END'
node a { states = ("x" "x" "y" "" "#1"); }
node b { states = ("(1)" "\033\377"); label = "\033[1m"; }
potential (b) { data = (2 2); }
END
printf 'node a { states = ("x" "y"); }\n\npotential (a) { data = (0.5 x); }\n' >"$work/malformed.net"
printf 'node a { states = ("x" "y"); }\npotential (a) { }\n' >"$work/warning.net"
printf 'node a { states = ("x" "y"); }\npotential (a) { data = (0 0); }\n' >"$work/no_distribution.net"
printf 'net { }\n' >"$work/no_nodes.net"
cat >"$work/negative.net" <<'END'
node a { states = ("x" "y"); }
node b { states = ("u" "u"); }
node c { states = ("x" "y"); }
potential (c | a b) { data = (1 0 1 0 1 -1 1 0); }
END
{
    echo "node a { states = ($(printf '"s%d" ' {1..30})); }"
    for i in {1..25}; do echo "node n$i { states = (\"x\"); } potential (n$i) { }"; done
} >"$work/wide.net"
cp "$work/warning.net" "$work/net { }"

# --- Results
expect 0 out '^P\(evidence\) +1$' beliefs "$clinic"
expect 0 out '^asia \(Visit to Asia\)  \[evidence: yes\]$' beliefs "$clinic" --evidence asia=yes
expect 0 out '^P\(evidence\) +0\.00450[0-9]*$' beliefs "$clinic" --evidence asia=yes dyspnoea='#0'
expect 0 out '^P\(evidence\) +0\.00450[0-9]*$' beliefs --evidence asia='(1, 0)' dyspnoea=yes "$clinic"
expect 0 out '^P\(evidence\) +2$' beliefs "$clinic" -e 'asia=(2 2)'
expect 0 out '^xray .*\[evidence: 0\.5 0\.25\]$' beliefs "$clinic" -e 'xray=(0.5 0.25)'
expect 0 out '^log P\(evidence\) +-4\.60517$' beliefs "$clinic" -e asia=yes
expect 0 out '^b \(\\x1b\[1m\)  \[evidence: #0\]$' beliefs "$work/states.net" -e b='#0'
expect 0 out '^  #0 \(1\)    0\.5$' beliefs "$work/states.net"
expect 0 out '\[evidence: y\]$' beliefs "$work/states.net" -e a=y
expect 0 out '\[evidence: #3\]$' beliefs "$work/states.net" -e a='#3'
expect 0 out '^P\(evidence\) +0\.99$' beliefs "$clinic" -e 'asia=(1e-400 1)'
expect 0 err "^$work/wide.net: 5 more warnings$" beliefs "$work/wide.net"
[ "$(wc -l <"$work/err")" -eq 21 ] || complain "20 warnings and how many more"
expect 0 err "^$work/warning.net:2: warning: no potential data specified$" beliefs "$work/warning.net"
(cd "$work" && "$quarn" beliefs 'net { }' >"$work/out" 2>"$work/err") || complain "a file called net { }"

# --- JSON
expect 0 out '"log_p": -5\.8559' beliefs "$clinic" --json -e asia=yes 'xray=(0.5 0.25)'
if command -v python3 >/dev/null; then
    python3 - "$work/out" "$clinic" <<'END' || complain "JSON"
import json, math, sys
result = json.load(open(sys.argv[1]))
assert list(result) == ["model", "evidence", "log_p", "p", "beliefs"]
assert result["model"] == sys.argv[2]
assert result["evidence"] == {"asia": "yes", "xray": [0.5, 0.25]}
assert math.isclose(math.exp(result["log_p"]), result["p"], rel_tol=1e-12)
assert list(result["beliefs"])[:3] == ["asia", "smoking", "tuberculosis"]
for node in result["beliefs"].values():
    assert node["states"] == ["yes", "no"] and math.isclose(sum(node["beliefs"]), 1, rel_tol=1e-12)
END
    "$quarn" beliefs "$work/states.net" --json | python3 -c '
import json, sys
assert json.load(sys.stdin)["beliefs"]["a"]["states"] == ["#0", "#1", "y", "#3", "#4"]' || fail "labels"
fi

expect 0 out '"p": null' beliefs "$clinic" --json -e 'asia=(1e308 1e308)' 'xray=(1e308 1e308)'

# --- What cannot be done
expect 1 err "^quarn: $work/none.net: cannot be read: No such file or directory$" beliefs "$work/none.net"
expect 1 err "^quarn: $work: cannot be read: Is a directory$" beliefs "$work"
expect 1 err 'no node a\\x1b\\x0a\\x7f\\xff\\xc2\\x9b\\xe2\\x80\\xaeü$' beliefs "$clinic" -e $'a\e\n\x7f\xff\xc2\x9b\xe2\x80\xaeü=x'
expect 1 err 'no node \[asia; did you mean asia\?$' beliefs "$clinic" -e '[asia=yes,xray=no]'
expect 1 err ', #19 s20 \.\.\. \(30 in all\)$' beliefs "$work/wide.net" -e a=none
expect 1 err "^$work/malformed.net:3: number expected$" beliefs "$work/malformed.net"
expect 1 err "^quarn: $work/no_nodes.net: the network has no nodes$" beliefs "$work/no_nodes.net"
expect 1 err 'net: node c: the probability of y given a=y, b=#0 is negative$' beliefs "$work/negative.net"
echo 'net { } utility u { }' >"$work/utility.net"
expect 1 err "^quarn: $work/utility.net: the network has no chance or decision nodes" beliefs "$work/utility.net"
expect 1 err 'net: node a: the probabilities sum to 0$' beliefs "$work/no_distribution.net"
expect 1 err '^quarn: .*there is no node lungs$' beliefs "$clinic" -e lungs=yes
expect 1 err 'node asia has no state maybe; its states are #0 yes, #1 no$' beliefs "$clinic" -e asia=maybe
expect 1 err 'has no state #99999999999999999999;' beliefs "$clinic" -e asia='#99999999999999999999'
expect 1 err 'has no state #;' beliefs "$clinic" -e asia='#'
expect 1 err 'node a has several states called x; its states are #0 x, #1 x, #2 y, #3, #4 #1$' \
    beliefs "$work/states.net" -e a=x
expect 1 err 'node asia needs 2 weights, not 3; its states' beliefs "$clinic" -e 'asia=(1 2 3)'
expect 1 err '^quarn: .*evidence is impossible' beliefs "$clinic" -e 'asia=(0 0)'
if [ -w /dev/full ]; then
    for arguments in "beliefs $clinic" --help --version; do
        # shellcheck disable=SC2086
        "$quarn" $arguments >/dev/full 2>"$work/err"
        [ $? -eq 1 ] && grep -q '^quarn: standard output: cannot be written$' "$work/err" ||
            complain "$arguments to a full device"
    done
fi

# --- Wrong command lines
expect 2 err '^quarn: the name of the MODEL file is missing$' beliefs ''
expect 2 err '^quarn: no command is given$'
expect 2 err '^quarn: unknown command bogus$' bogus
expect 2 err '^quarn: ' beliefs "$clinic" --no-such-option
expect 2 err 'evidence is written NODE=STATE$' beliefs "$clinic" -e =yes
expect 2 err 'evidence is written NODE=STATE$' beliefs "$clinic" -e asia=
expect 2 err 'given twice$' beliefs "$clinic" -e asia=yes asia=no
for weights in '(1 x)' '(-1 1)' '(inf 1)' '(nan 1)' '(.5.5)' '(1.7976931348623157e308 1)'; do
    expect 2 err 'weights must be numbers from 0 to below .*, separated by blanks or commas$' beliefs "$clinic" -e "asia=$weights"
done
expect 2 err 'weights are missing$' beliefs "$clinic" -e 'asia=( )'

# --- Help
expect 0 out '^quarn [0-9]+\.[0-9]+\.[0-9]+$' --version
expect 0 out '^The network itself:$' help
expect 0 out '^Example:$' help beliefs
! grep -E '.{81}' "$work/out" || complain "long lines in the help"

[ $failures -eq 0 ]
