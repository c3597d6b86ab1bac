#!/usr/bin/env bash
# Case files: quarn case writes what quarn beliefs and quarn solve take by --case.
# usage: case.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"
patient=$work/patient.case

expect_case() { [ "$(cut -f 1 "$patient")" == "$1" ] || fail "$(cat "$patient")"; }

expect 0 '' case "$clinic" -e asia=yes 'xray=(0.9 0.2)' -o "$patient"
expect_case $'xray: (0.9 0.2)\nasia: "yes"'
expect 0 "$("$quarn" beliefs "$clinic" -e asia=yes 'xray=(0.9 0.2)')" beliefs "$clinic" --case "$patient"
expect 0 '' case "$clinic" --case "$patient" -e xray=no smoking=#0 -o "$patient"
expect_case $'xray: "no"\nsmoking: "yes"\nasia: "yes"'
expect 0 '' case "$oil" -o "$patient" -e test=yes seismic=open
expect 0 'expected utility         22.8571' solve "$oil" --case "$patient"
expect 0 'seismic (Seismic structure)  [evidence: open]' beliefs "$oil" --case "$patient" -e test=yes

printf 'asia: yes\nxray: maybe\nother: 1\n' >"$patient"
expect 1 "$patient:2: \"maybe\" is not a (unique) state label of \`xray'
$patient:3: the domain has no node named \`other'" beliefs "$clinic" --case "$patient"
expect 1 "$work/none.case: cannot be read: No such file or directory" beliefs "$clinic" --case "$work/none.case"
expect 1 '/: cannot be written' case "$clinic" -o /
expect 1 '/dev/full: cannot be written' case "$clinic" -e asia=yes -o /dev/full
expect 2 '--output is required' case "$clinic" -e asia=yes

[ $failures -eq 0 ]
