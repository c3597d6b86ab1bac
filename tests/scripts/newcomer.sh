#!/usr/bin/env bash
# What README.md says gets a newcomer from a fresh clone to beliefs: on the command line, in C and in Python.
# usage: newcomer.sh SOURCE_DIR WORK_DIR
set -euo pipefail
source_dir=$(realpath "$1")
rm -rf "$2"
mkdir -p "$2"
work=$(realpath "$2")
export HOME=$work/home
unset LD_LIBRARY_PATH PKG_CONFIG_PATH PYTHONPATH

git clone -q "$source_dir" "$work/clone"
cd "$work/clone"
# The commands of README.md but the tests, in the order in which they stand.
awk '/^```/ { inside = $0 == "```sh"; next } inside && !/^scripts\/test/' README.md >"$work/commands"
grep -q 'cmake --install' "$work/commands"
set -x
# shellcheck source=/dev/null
source "$work/commands"
set +x
python3 tests/scripts/documents.py . "$HOME/.local/bin" README.md
