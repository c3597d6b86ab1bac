#!/usr/bin/env bash
# quarn sample: what is drawn, how it is written, and what a file holds when that fails.
# usage: sample.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

command=sample
insurance=$2/examples/car_insurance.net
draw() { "$quarn" sample "$@" 2>&1; }

# --- Repeatable by the seed, drawn forward and from junction trees
for evidence in '' xray=yes; do
    given=("$clinic" -n 50 ${evidence:+-e "$evidence"})
    drawn=$(draw "${given[@]}")
    [ "$(wc -l <<<"$drawn")" -eq 51 ] || fail "not 50 cases: $drawn"
    [ "$(draw "${given[@]}" --seed 310952)" == "$drawn" ] || fail "not the same cases again"
    [ "$(draw "${given[@]}" --seed 1)" != "$drawn" ] || fail "the same cases with another seed"
done
[ "$(draw "$clinic")" == "$(draw "$clinic" -n 50 | head -2)" ] || fail "not one case"

# --- What is written
printf 'node a { states = ("x,y" "\\"" "\\n" "\\r" "" "z z"); } node b { states = ("u"); } function f { }' \
    >"$work/texts.net"
whole=1
expect 0 'asia,smoking,tuberculosis,cancer,bronchitis,either,xray,dyspnoea' "$clinic" -n 0
missing="$work/texts.net: warning: node f has no value in"
why='A probability/density function or a function value could not be computed.'
row=0
for text in '"x,y"' '""""' $'"\n"' $'"\r"' '#4' 'z z'; do
    expect 0 $'a,b,f\n'"$text,u,"$'\n'"$missing 1 case: $why" "$work/texts.net" -e "a=#$((row++))"
done
unset whole
expect 0 $'f\n""\n""\n'"$missing 2 cases" "$work/texts.net" -n 2 --nodes f
expect 0 $'light,waste\n1.1,household' "$waste" -e light=1.1 waste=household --nodes light,waste,light
expect 0 $'seismic\nnot tested\nnot tested\nnot tested' "$oil" -n 3 -e test=no --nodes seismic

# --- What is drawn
if command -v python3 >/dev/null; then
    python3 - "$quarn" "$clinic" "$oil" "$waste" "$insurance" <<'END' || fail "cases"
import csv, json, math, subprocess, sys
quarn, clinic, oil, waste, insurance = sys.argv[1:]
def ask(command, *arguments):
    return subprocess.run([quarn, command, *arguments], capture_output=True, text=True, check=True).stdout
def draw(*arguments):
    return list(csv.DictReader(ask("sample", *arguments).splitlines()))
count = 4000
for given in [[clinic], [clinic, "-e", "dyspnoea=yes", "xray=(0.9 0.2)"], [oil, "-e", "test=yes"], [waste],
              [waste, "-e", "light=1.1"], [insurance], [insurance, "-e", "claims=two"]]:
    cases = draw(*given, "-n", str(count))
    assert len(cases) == count
    for node, result in json.loads(ask("beliefs", *given, "--json"))["beliefs"].items():
        for state, belief in zip(result.get("states", []), result.get("beliefs", [])):
            share = sum(case[node] == state for case in cases) / count
            assert abs(share - belief) <= 4 * math.sqrt(belief * (1 - belief) / count) + 1e-12, (given, node, state)
        if "mean" in result and not "states" in result:
            mean = sum(float(case[node]) for case in cases) / count
            assert abs(mean - result["mean"]) <= 4 * result["sd"] / math.sqrt(count) + 1e-9, (given, node)
for case in draw(oil, "-n", "100"):
    gain = {"dry": -70, "wet": 50, "soaking": 200}[case["oil"]] if case["drill"] == "yes" else 0
    assert float(case["profit"]) == gain and float(case["test_cost"]) == (-10 if case["test"] == "yes" else 0)
for case in draw(insurance, "-n", "100", "-e", "region=town"):
    basic = (200 + 150 * ["none", "one", "two"].index(case["claims"]) +
             10 * {"short": 5, "medium": 15, "long": 30}[case["distance"]])
    premium = basic * (0.8 if case["garage"] == "true" else 1)
    assert float(case["basic"]) == basic and math.isclose(float(case["premium"]), premium)
    assert float(case["deductible"]) == (300 if case["garage"] == "true" else 500)
END
fi

# --- What cannot be done
printf 'decision d { states = ("u" "v"); } node a { states = ("x" "y"); } potential (a | d) { data = (1 0 0 0); }' \
    >"$work/zeros.net"
expect 0 $'d,a\nu,x' "$work/zeros.net" -e d=u  # the other row is not come to
expect 1 'zeros.net: node a: the probabilities given d=v sum to 0' "$work/zeros.net" -e d=v
expect 1 'decision test, which is open' "$oil" -e seismic=open
expect 1 'no node lungs' "$clinic" --nodes lungs
for number in -1 1.5 x 1x ''; do
    expect 2 '' "$clinic" -n "$number"
    expect 2 '' "$clinic" --seed "$number"
done
expect 2 '--seed needs a whole number from 0 to 4294967295' "$clinic" --seed 4294967296

# --- Files: complete, or as they were
cases=$work/folder/cases.csv
mkdir "$work/folder"
is_alone() { [ "$(ls -A "$work/folder")" == cases.csv ] || fail "$1: $(ls -A "$work/folder")"; }
echo old >"$cases"
chmod 640 "$cases"
expect 1 'evidence is impossible' "$clinic" -e either=yes cancer=no tuberculosis=no -o "$cases"
"$quarn" sample "$clinic" -n 1000000000 -o "$cases" &
until [ -e "$work/folder/.quarn-0.tmp" ] || ! kill -0 $! 2>/dev/null; do sleep 0.01; done
kill $! || fail "not running"
wait $!
[ "$(cat "$cases")" == old ] || fail "killed: $(head -3 "$cases")"
is_alone "failed"
whole=1 expect 0 '' "$clinic" -n 5000 -o "$cases"
[ "$(cat "$cases")" == "$(draw "$clinic" -n 5000)" ] || fail "a file unlike standard output"
[ "$(stat -c %a "$cases")" == 640 ] || fail "other permissions"
is_alone "done"
ln -s folder/linked.csv "$work/link"
expect 0 '' "$clinic" -o "$work/link"
[ -L "$work/link" ] && [ -s "$work/folder/linked.csv" ] || fail "a link that leads nowhere yet was not followed"
expect 1 "$work/folder: cannot be written" "$clinic" -o "$work/folder"
expect 1 "$work/none/cases.csv: cannot be written" "$clinic" -o "$work/none/cases.csv"
expect 1 '/dev/full: cannot be written' "$clinic" -n 100000 -o /dev/full
if [ -w /dev/full ]; then
    said=$("$quarn" sample "$clinic" 2>&1 >/dev/full)
    [[ $? -eq 1 && $said == 'quarn: standard output: cannot be written' ]] || fail "full device: $said"
fi

[ $failures -eq 0 ]
