#!/usr/bin/env bash
# quarn dsep: lists of nodes as they may be written, both outputs, every way to fail.
# usage: dsep.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

command=dsep whole=yes

some='d-connected:
  asia (Visit to Asia)  [source]
  smoking (Smoker)
  cancer (Lung cancer)
  bronchitis (Bronchitis)  [source]
  either (Tuberculosis or cancer)
  xray (Positive X-ray)  [soft evidence]

d-separated:
  tuberculosis (Tuberculosis)  [given]
  dyspnoea (Dyspnoea)  [given]'
expect 0 "$some" "$clinic" --source asia,bronchitis --given tuberculosis,dyspnoea --soft xray
expect 0 "$some" -s asia -s bronchitis -g dyspnoea -g tuberculosis,dyspnoea --soft xray "$clinic"
printf 'node a { states = ("x"); label = "\033[1m"; }\npotential (a) { data = (1); }\n' >"$work/label.net"
expect 0 $'d-connected:\n  a (\\x1b[1m)  [source]\n\nd-separated:\n  (none)' "$work/label.net" -s a
expect 0 $'d-connected:\n  (none)\n\nd-separated:\n  a (\\x1b[1m)  [source]  [given]' "$work/label.net" -s a -g a
if command -v python3 >/dev/null; then
    "$quarn" dsep "$clinic" -s asia,asia -g tuberculosis --soft xray,either --json | python3 -c '
import json, sys
assert json.load(sys.stdin) == {
    "model": sys.argv[1], "sources": ["asia", "asia"], "given": ["tuberculosis"], "soft": ["xray", "either"],
    "d_connected": ["asia"],
    "d_separated": "smoking tuberculosis cancer bronchitis either xray dyspnoea".split()}' "$clinic" || fail "line $LINENO"
fi

# --- What cannot be done, and wrong command lines
expect 1 "quarn: $clinic: there is no node lungs" "$clinic" -s asia,lungs
expect 1 "quarn: $clinic: there is no node [asia; did you mean asia?" "$clinic" -s asia -g '[asia,xray]'
expect 1 "quarn: $clinic: there is no node \\x1b" "$clinic" -s asia --soft $'\e'
expect 1 "quarn: $work/none.net: cannot be read: No such file or directory" "$work/none.net" -s asia
expect 1 "quarn: $oil: node profit is a utility: it can be no source and takes no evidence" "$oil" -s profit
expect 2 'quarn: --source is required' "$clinic"
expect 2 'quarn: MODEL is required' -s asia
expect 2 'quarn: The following argument was not expected: xray' "$clinic" -s asia xray
expect 2 'quarn: the name of the MODEL file is missing' '' -s asia

[ $failures -eq 0 ]
