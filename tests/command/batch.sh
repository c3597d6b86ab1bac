#!/usr/bin/env bash
# quarn batch: the same as quarn beliefs for each case, in any number of threads; what becomes of bad rows and files.
# usage: batch.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

command=batch
cases=$work/cases.csv
insurance=$2/examples/car_insurance.net
whole=1

# --- Columns and quoting; \r\n, empty lines, a mark at the start and no end of the last line
printf 'node a { states = ("x" "y,\\"z" "" "(u)"); } potential (a) { data = (1 2 4 1); }' >"$work/texts.net"
printf '\xEF\xBB\xBF"the ""id""",a\r\n\r\n"1\n2", \r\n3,"y,""z"\r4,"(1 0 0,0)"\n\n"5, or",\n6,#2' >"$cases"
names='"the ""id""",a=x,"a=y,""z",a=#2,a=#3,log_p,error'
no_state='node a has no state  ; its states are #0 x, #1 y,"z, #2, #3 (u)'
expect 0 "$names"$'\n"1\n2",,,,,,"'"${no_state//\"/\"\"}"$'"\n3,0,1,0,0,-1.3862943611198906,
4,1,0,0,0,-2.0794415416798357,\n"5, or",0.125,0.25,0.5,0.125,0,\n6,0,0,1,0,-0.6931471805599453,
'"$cases:3: $no_state"$'\n'"$cases: 1 of 5 rows failed, this one first" "$work/texts.net" "$cases" --keep 'the "id"'
printf 'a\n""\n' >"$cases"
expect 0 $'a=x,"a=y,""z",a=#2,a=#3,log_p,error\n0.125,0.25,0.5,0.125,0,' "$work/texts.net" "$cases"
printf 'xray,asia' >"$cases"
expect 0 $'asia,cancer=yes,cancer=no,log_p,error\n' "$clinic" "$cases" --targets cancer,cancer --keep asia
unset whole

# --- Rows that fail, and no others
printf 'id,test,seismic,profit\n1,yes\n2,yes,open,9\n3,,open,\n4,(1 2),,\n5,yes,not tested,\n6,(1 x),,\n7,no,,,\n' >"$cases"
expect 0 $'id,profit:expected,log_p,error\n1,,,the row has 2 fields instead of 4\n2,' "$oil" "$cases" --keep id --targets profit
for said in "$cases: warning: column profit is not used" "$cases:2: the row has 2" "$cases: 6 of 7 rows failed" \
    '3,,,"what is observed of node seismic can depend on decision test, which is open: tell its state as well"' \
    '4,,,"node test is a decision: its evidence is a state, not a likelihood"' '7,,,the row has 5 fields instead of 4' \
    '5,,,"the evidence is impossible, or too improbable to compute with"' '6,,,"node test: weights must be numbers'; do
    grep -qF "$said" "$work/out" "$work/err" || fail "$said: $(cat "$work/out" "$work/err")"
done

# --- What makes the command fail
while IFS='|' read -r text message; do
    printf '%b' "$text" >"$cases"
    expect 1 "$cases$message" "$clinic" "$cases" --keep id
done <<'END'
\n\nid,asia,lungs\n|:3: column lungs is no node of
id,asia,asia\n|:1: column asia is there twice
asia\n|:1: there is no column id to be kept
\n\r\n|: there is no row with the names of nodes
id,asia\n1,"yes\n2,no\n|:2: the quotes in this row are not in order
id,asia\n1,yes\n"2"0,no\n|:3: the quotes in this row are not in order
END
expect 1 "$work/none.csv: cannot be read: No such file" "$clinic" "$work/none.csv"
expect 1 "/: cannot be written" "$clinic" "$2/examples/chest_clinic_cases.csv" --keep patient -o /
expect 2 'cannot both come from standard input' - -
for jobs in 0 -1 x 1025; do expect 2 '--jobs needs a whole number from 1' "$clinic" "$cases" -j "$jobs"; done

# --- The same bytes for any number of threads, from files and pipes, though likelihoods are taken back inexactly
! command -v python3 >/dev/null || python3 - "$cases" <<'END' || fail "line $LINENO"
import random, sys
random.seed(1)
with open(sys.argv[1], "w") as cases:
    print("id,smoking,xray,dyspnoea,either,cancer", file=cases)
    for row in range(3000):
        weights = ["" if random.random() < 0.4 else f"({random.random()} {random.random()})" for _ in range(3)]
        hard = ["yes", "no"] if row % 16 == 7 else ["", random.choice(["", "", "yes"])]
        print(row, *weights, *hard, sep=",", file=cases)
END
for jobs in 1 2 3; do expect 0 '' "$clinic" "$cases" --keep id -j $jobs -o "$work/$jobs.csv"; done
cmp "$work/1.csv" "$work/2.csv" && cmp "$work/1.csv" "$work/3.csv" || fail "other results in other threads"
cut -d , -f 1 "$cases" | cmp - <(cut -d , -f 1 "$work/3.csv") || fail "not in order"
"$quarn" batch - "$cases" --keep id <"$clinic" 2>/dev/null | cmp - "$work/1.csv" || fail "the model in a pipe"
"$quarn" batch "$clinic" - --keep id <"$cases" 2>/dev/null | cmp - "$work/1.csv" || fail "cases in a pipe"

# --- Each row as quarn beliefs has it, and what quarn sample writes as input
! command -v python3 >/dev/null || python3 - "$quarn" "$clinic" "$oil" "$waste" "$insurance" <<'END' || fail "line $LINENO"
import csv, json, math, random, subprocess, sys
quarn, clinic, oil, waste, insurance = sys.argv[1:]
def ask(*arguments, **others):
    return subprocess.run([quarn, *arguments], capture_output=True, text=True, **others).stdout
random.seed(2)
for model in clinic, oil, waste, insurance:
    sampled = list(csv.reader(ask("sample", model, "-n", "12").splitlines()))
    names, rows = sampled[0], sampled[1:]
    computed = {name for name in names if ask("beliefs", model, "-e", f"{name}=0", "--nodes", name) == ""}
    function = {"basic", "discount", "premium", "deductible", "tariff", "long_distance", "income", "test_cost", "profit"}
    for row in rows:
        for i, name in enumerate(names):
            if random.random() < 0.5 and name != "test": row[i] = ""
            elif model == clinic and random.random() < 0.2: row[i] = "(0.3 0.8)"
    text = "\n".join(",".join(row) for row in [names, *rows])
    answers = list(csv.DictReader(ask("batch", model, "-", input=text).splitlines()))
    assert len(answers) == len(rows)
    for row, answer in zip(rows, answers):
        given = [f"{n}={v}" for n, v in zip(names, row) if v and n not in function]
        result = json.loads(ask("beliefs", model, "--json", *(["-e", *given] if given else [])))
        expected = {"log_p": result["log_p"], **{f"{n}:expected": v for n, v in result.get("utilities", {}).items()}}
        for name, node in result["beliefs"].items():
            if "value" in node: expected[name] = node["value"]
            elif "states" in node: expected |= {f"{name}={s}": b for s, b in zip(node["states"], node["beliefs"])}
            else: expected |= {f"{name}:{key}": node[key] for key in ("mean", "variance")}
        assert answer.pop("error") == "" and answer.keys() == expected.keys(), (answer, expected)
        for key, value in expected.items():
            assert answer[key] == "" if value is None else math.isclose(
                float(answer[key]), value, rel_tol=1e-12, abs_tol=1e-12), (model, given, key, answer[key], value)
END

# --- Interrupted, and full
mkdir "$work/folder"
yes ',yes' | sed '1s/.*/asia,xray/' | "$quarn" batch "$clinic" - -o "$work/folder/answers.csv" &
until [ -s "$work/folder/.quarn-0.tmp" ] || ! kill -0 $! 2>/dev/null; do sleep 0.01; done
kill $! || fail "not running"
wait $!
[ -z "$(ls -A "$work/folder")" ] || fail "left: $(ls -A "$work/folder")"
printf 'asia\n%s' "$(yes yes | head -5000)" >"$cases"
expect 1 '/dev/full: cannot be written' "$clinic" "$cases" -o /dev/full -j 2
! "$quarn" batch "$clinic" "$cases" -j 1 2>/dev/null >&- || fail "wrote to a closed standard output"

[ $failures -eq 0 ]
