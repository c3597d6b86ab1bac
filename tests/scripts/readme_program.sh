#!/usr/bin/env bash
# The program in README.md compiles as it stands and prints what README.md says.
# usage: readme_program.sh SOURCE_DIR LIBRARY_DIR C_COMPILER
set -euo pipefail
source_dir=$1 library_dir=$2 compiler=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# The text between the first line that is ```LANGUAGE after a heading and the next ```.
block() { awk -v open="$1" '/^```/ { if (inside) exit; inside = $0 == open; next } inside' "$source_dir/README.md"; }

block '```c' >"$folder/first.c"
"$compiler" -std=c99 -Wall -Wextra -Werror "$folder/first.c" -I"$source_dir/include" -L"$library_dir" -lquarn -o "$folder/first"
LD_LIBRARY_PATH=$library_dir "$folder/first" >"$folder/printed"
[ -s "$folder/printed" ]
while read -r line; do
    grep -Fxq -- "$line" "$source_dir/README.md" || { echo "README.md does not show: $line"; exit 1; }
done <"$folder/printed"
