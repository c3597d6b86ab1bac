#!/usr/bin/env bash
# An installed library can be found and used from C and C++, by CMake and by pkg-config, and the installed tool finds its
# library.
# usage: installed_consumer.sh BUILD_DIR SOURCE_DIR WORK_DIR CMAKE GENERATOR C_COMPILER CXX_COMPILER
set -euo pipefail
build=$1
source_dir=$2
work=$3
cmake=$4
generator=$5
cc=$6
cxx=$7
unset LD_LIBRARY_PATH
prefix=$work/prefix
consumer=$source_dir/tests/consumer

rm -rf "$work"
mkdir -p "$work"
"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log"

echo "-- by CMake"
"$cmake" -S "$consumer" -B "$work/consumer" -G "$generator" -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_PREFIX_PATH="$prefix" >"$work/configure.log" 2>&1 || { cat "$work/configure.log"; exit 1; }
"$cmake" --build "$work/consumer"
"$work/consumer/consumer"
"$work/consumer/consumer_cpp" "$source_dir/examples"

echo "-- by pkg-config"
pc=$(find "$prefix" -name quarn.pc)
export PKG_CONFIG_PATH=${pc%/*}
read -ra flags <<<"$(pkg-config --cflags --libs quarn)"
"$cc" -std=c99 "$consumer/main.c" -o "$work/consumer_pc" "${flags[@]}"
"$cxx" -std=c++20 "$consumer/main.cpp" -o "$work/consumer_pc_cpp" "${flags[@]}"
LD_LIBRARY_PATH=$(pkg-config --variable=libdir quarn)
export LD_LIBRARY_PATH
"$work/consumer_pc"
"$work/consumer_pc_cpp" "$source_dir/examples"
unset LD_LIBRARY_PATH

if [ -x "$prefix/bin/quarn" ]; then
    echo "-- the installed tool"
    "$prefix/bin/quarn" --help >/dev/null
fi
