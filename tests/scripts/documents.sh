#!/usr/bin/env bash
# The programs and commands in the documents run as they stand, against an installation.
# usage: documents.sh BUILD_DIR SOURCE_DIR WORK_DIR CMAKE PYTHON
set -euo pipefail
build=$1 source_dir=$2 work=$3 cmake=$4 python=$5

rm -rf "$work"
mkdir -p "$work/bin"
"$cmake" --install "$build" --prefix "$work/prefix" >"$work/install.log"
ln -s "$python" "$work/bin/python3"
ln -s "$work/prefix/bin/quarn" "$work/bin/quarn"
pc=$(find "$work/prefix" -name quarn.pc)
export PKG_CONFIG_PATH=${pc%/*}
LD_LIBRARY_PATH=$(pkg-config --variable=libdir quarn)
export LD_LIBRARY_PATH PYTHONPATH=$work/prefix/lib/python3/dist-packages

mapfile -t documents < <(find "$source_dir"/README.md "$source_dir"/docs "$source_dir"/python -name '*.md' | sort)
"$python" "$(dirname "${BASH_SOURCE[0]}")/documents.py" "$source_dir" "$work/bin" "${documents[@]}"
