#!/usr/bin/env bash
# The output of every --json is as its schema in docs/schema says.
# usage: json_schema.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

/usr/bin/python3 -c 'import jsonschema' 2>/dev/null || { echo 'skipped: no jsonschema'; exit 0; }
car=$2/examples/car_insurance.net
printf 'node a { states = ("x" "y"); } potential (a) { data = (1e-300 1); }
node b { states = ("x" "y"); } potential (b | a) { data = (1 0 0 1); }\n' >"$work/small.net"
echo 'utility U { } function F { } potential (U) { data = (3); }' >"$work/nothing.net"
printf 'node a { states = ("x" "y"); } node b { states = ("x" "y"); } potential (a b) { data = (1 1 1 1); }\n' >"$work/chain.net"
echo 'node a { states = ("x" "y"); } potential (a) { data = (1e999 1); }' >"$work/infinite.net"

count=0
# STATUS COMMAND MODEL ARGUMENT...
while read -r status asked model arguments; do
    # shellcheck disable=SC2086
    "$quarn" "$asked" "$model" $arguments --json >"$work/out.json" 2>"$work/err"
    actual=$?
    [ $actual -eq "$status" ] || fail "$asked $model $arguments: status $actual: $(cat "$work/err")"
    mv "$work/out.json" "$work/$((++count)).$asked.json"
done <<END
0 beliefs $clinic
0 beliefs $clinic -e asia=yes xray=(0.9,0.2) smoking=#0
0 beliefs $clinic -e xray=yes dyspnoea=no --mode fast-retraction --nodes cancer
0 beliefs $clinic -e dyspnoea=yes --max
0 beliefs $clinic -e xray=yes --top 3
0 beliefs $work/small.net -e a=(1e-300,0)
0 beliefs $waste -e light=1.1 waste=industrial
0 beliefs $waste -e light=1.1 --top 4
0 beliefs $oil -e test=yes seismic=closed
0 beliefs $car -e region=town claims=two
0 dsep $clinic -s asia
0 dsep $clinic -s asia -g xray,smoking --soft dyspnoea
0 compile $clinic -m total-weight
0 compile $waste
0 compile $oil
0 solve $oil
0 solve $oil -e test=yes seismic=open --minimize --start file
0 info $clinic
0 info $waste
0 info $oil
0 info $car
0 info $work/nothing.net
0 info $work/chain.net
0 info $work/infinite.net
END

/usr/bin/python3 - "$2/docs/schema" "$work" <<'END' || fail "see above"
import json, pathlib, sys
from jsonschema import Draft202012Validator
schemas, outputs = map(pathlib.Path, sys.argv[1:])

def parts(schema):  # every object that lists its properties
    if isinstance(schema, dict):
        if "properties" in schema:
            yield schema
        for value in schema.values():
            yield from parts(value)

failures = seen = 0
for path in sorted(schemas.glob("*.schema.json")):
    schema = json.loads(path.read_text())
    Draft202012Validator.check_schema(schema)
    for part in parts(schema):
        assert part["additionalProperties"] is False, (path, part)
        assert all("description" in value for value in part["properties"].values()), (path, part)
    command = path.name.split(".")[0]
    for output in outputs.glob(f"*.{command}.json"):
        seen += 1
        for error in Draft202012Validator(schema).iter_errors(json.loads(output.read_text())):
            failures += 1
            print(output.name, error.json_path, error.message)
sys.exit(failures > 0 or seen != len(list(outputs.glob("*.json"))))
END

[ $failures -eq 0 ]
