#!/usr/bin/env bash
# The library exports exactly the functions that its header declares.
# usage: exported_symbols.sh LIBRARY HEADER
set -euo pipefail
export LC_ALL=C
library=$1
header=$2

# Comments and preprocessor lines go first; what is left in front of a parenthesis is a function's name.
declared=$(perl -0777 -ne '
    s{/\*.*?\*/}{ }gs;
    s{//[^\n]*}{}g;
    s{^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*}{}mg;
    print "$1\n" while /\b(q_\w+)\s*\(/g;' "$header" | sort -u)
exported=$(nm -D --defined-only --format=posix "$library" | cut -d' ' -f1 | sort -u)

if [ -z "$declared" ]; then
    echo "no declarations found in $header"
    exit 1
fi
missing=$(comm -23 <(echo "$declared") <(echo "$exported"))
extra=$(comm -13 <(echo "$declared") <(echo "$exported"))
[ -z "$missing" ] || printf 'declared but not exported:\n%s\n' "$missing"
[ -z "$extra" ] || printf 'exported but not declared:\n%s\n' "$extra"
echo "$(wc -l <<<"$declared") functions declared"
[ -z "$missing$extra" ]
