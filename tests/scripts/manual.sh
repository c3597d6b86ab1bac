#!/usr/bin/env bash
# Every function of quarn.h has a comment, and Doxygen finds nothing wrong with those of both headers.
# usage: manual.sh DOXYGEN DOXYFILE SOURCE_DIR
set -euo pipefail
doxygen=$1 doxyfile=$2 source_dir=$3

awk -f "$source_dir/cmake/manual/header.awk" "$source_dir/include/quarn.h" | awk '
    /^Q_API/ { ++functions; if (before !~ /\*\/$/) { print "no comment: " $0; failed = 1 } }
    { before = $0 }
    END { print functions + 0 " functions"; exit failed || !functions }'
"$doxygen" "$doxyfile"
manual=${doxyfile%/*}/html
[ "$(find "$manual" -name 'group__*.html' | wc -l)" -gt 10 ] || { echo "$manual: the sections of the header are missing"; exit 1; }
