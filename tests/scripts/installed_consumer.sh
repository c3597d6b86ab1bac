#!/usr/bin/env bash
# An installed library can be found and used, by CMake and by pkg-config, and the installed tool finds its library.
# usage: installed_consumer.sh BUILD_DIR CONSUMER_DIR WORK_DIR CMAKE GENERATOR C_COMPILER
set -euo pipefail
build=$1
consumer=$2
work=$3
cmake=$4
generator=$5
cc=$6
unset LD_LIBRARY_PATH
prefix=$work/prefix

rm -rf "$work"
mkdir -p "$work"
"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log"

echo "-- by CMake"
"$cmake" -S "$consumer" -B "$work/consumer" -G "$generator" -DCMAKE_C_COMPILER="$cc" -DCMAKE_PREFIX_PATH="$prefix" \
    >"$work/configure.log" 2>&1 || { cat "$work/configure.log"; exit 1; }
"$cmake" --build "$work/consumer"
"$work/consumer/consumer"

echo "-- by pkg-config"
pc=$(find "$prefix" -name quarn.pc)
export PKG_CONFIG_PATH=${pc%/*}
read -ra flags <<<"$(pkg-config --cflags --libs quarn)"
"$cc" -std=c99 "$consumer/main.c" -o "$work/consumer_pc" "${flags[@]}"
LD_LIBRARY_PATH=$(pkg-config --variable=libdir quarn) "$work/consumer_pc"

if [ -x "$prefix/bin/quarn" ]; then
    echo "-- the installed tool"
    "$prefix/bin/quarn" --help >/dev/null
fi
