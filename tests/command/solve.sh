#!/usr/bin/env bash
# quarn solve: the oil wildcatter as published, links that do not matter, starts, evidence, every way to fail.
# usage: solve.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

command=solve

# --- As published, but for what is impossible
expect 0 $'test (Seismic test) [decision]\n choice\n yes\n
drill (Drill for oil) [decision]\n test seismic choice\n yes none no\n yes open yes\n yes closed yes
 yes not tested (cannot occur)\n no none (cannot occur)\n no open (cannot occur)\n no closed (cannot occur)
 no not tested yes\n\ntest_cost (Cost of the test)\n expected -10\n\nprofit (Profit from drilling)\n expected 32.5\n
P(evidence) 1\nlog P(evidence) 0\nexpected utility before 5\nexpected utility 22.5' "$oil"

# --- Evidence: decisions that are made, what cannot occur then
expect 0 $'test (Seismic test) [decision] [evidence: yes]\n\ndrill' "$oil" -e test=yes seismic=open
expect 0 $' none (cannot occur)\n yes open yes\n yes closed (cannot occur)\n' "$oil" -e test=yes seismic=open
expect 0 $'before 6.42857\nexpected utility 22.8571' "$oil" -e test=yes seismic=open
expect 0 $' no not tested no\n' "$oil" -e oil=dry

# --- Several best states; links that do not matter; evidence on the parents of several decisions
cat >"$work/ties.net" <<'END_OF_NET'
node coin { states = ("0" "1"); } potential (coin) { data = (1 1); }
node noise { states = ("x" "y" "y"); } potential (noise) { data = (1 1 2); }
decision d { states = ("a" "b" "c"); } potential (d | noise coin) { data = (1 0 0 1 0 0 1 0 0 1 0 0 1 0 0 1 0 0); }
decision e { states = ("u" "v"); } potential (e | noise) { data = (1 1 1 1 1 1); }
utility gain { } potential (gain | coin d) { data = (1 1 0 0 5 5); } utility cost { } potential (cost | e) { data = (-2 -1); }
END_OF_NET
expect 0 $'noise coin choice\n x 0 a 0.5, b 0.5\n x 1 b 0.5, c 0.5\n #1 y 0 a 0.5, b 0.5\n' "$work/ties.net"
expect 0 $' x 0 a\n x 1 b 0.5, c 0.5\n' "$work/ties.net" --start file
expect 0 $' noise -> d\n noise -> e\n\nd [decision]\n coin choice\n 0 a 0.5, b 0.5\n' "$work/ties.net" --minimize
expect 0 $' #2 y 0 (cannot occur)\n #2 y 1 b 0.5, c 0.5\n\ne [decision]\n noise choice\n x (cannot occur)\n #1 y v\n #2 y v\n' "$work/ties.net" -e 'coin=(0 3)' 'noise=(0 1 2)'

# --- Starts: two decisions that must go together, in the file as they should not
cat >"$work/team.net" <<'END_OF_NET'
decision d { states = ("a" "b"); } potential (d) { data = (1 0); } decision e { states = ("a" "b"); } potential (e) { data = (1 0); }
utility u { } potential (u | d e) { data = (1 0 0 2); }
END_OF_NET
expect 0 $'before 0.75\nexpected utility 2' "$work/team.net" --start uniform
expect 0 $'before 1\nexpected utility 1' "$work/team.net" --start file

# --- What cannot be done, and wrong command lines
sed '/^utility/d' "$work/team.net" >"$work/useless.net"
expect 1 "$clinic: the network has no decisions" "$clinic"
expect 1 "$work/useless.net: the network has no utilities" "$work/useless.net" --minimize
expect 1 'the evidence is impossible' "$oil" -e test=no seismic=open
expect 1 'what is observed of node seismic can depend on decision test, which is open' "$oil" -e seismic=open
expect 2 'unknown start best; there are uniform and file' "$oil" --start best

! command -v python3 >/dev/null || python3 - "$quarn" "$oil" <<'END_OF_TEST' || fail "line $LINENO"
import json, subprocess, sys
found = json.loads(subprocess.check_output([sys.argv[1], "solve", sys.argv[2], "--minimize", "--json"]))
assert " ".join(found) == "model evidence log_p p start removed_links policies utilities expected_utility_before expected_utility"
drill = found["policies"]["drill"]
assert [len(parent["states"]) for parent in drill["parents"]] == [2, 4] and drill["policy"][0] == [0, 1]
assert drill["possible"] == [True] * 3 + [False] * 4 + [True] and abs(found["utilities"]["profit"] - 32.5) < 1e-9
END_OF_TEST

[ $failures -eq 0 ]
