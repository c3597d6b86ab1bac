#!/usr/bin/env bash
# What bash proposes for command lines, without the helpers of the package bash-completion.
# usage: completion.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

file=$(dirname "$quarn")/documents/quarn
mkdir -p "$work/in/nets" && cd "$work/in" && touch a.net 'b c.net' cases.csv || exit 1

# proposed PROPOSALS WORD...: the last word is the one that is completed.
proposed() {
    local wanted=$1 found
    shift
    found=$(env -i PATH="$PATH" bash --norc -c 'source "$1"; shift
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _quarn; printf "%s\n" "${COMPREPLY[@]}" | sort' - "$file" quarn "$@" 2>&1)
    [ "${found//$'\n'/ }" = "$wanted" ] || fail "quarn $*: '${found//$'\n'/ }', not '$wanted'"
}

proposed 'beliefs' be
proposed 'case check compile convert' c
proposed '--help --version' --
proposed 'solve' help so
proposed '--max --mode' beliefs --m
proposed 'fast-retraction normal' beliefs a.net --mode ''
proposed 'fast-retraction' beliefs --mode = fa
proposed 'fast-retraction normal' beliefs --mode =
proposed 'fill-in-size fill-in-weight' compile -m fi
proposed 'a.net b c.net nets' beliefs ''
proposed 'a.net' beliefs -e asia = yes --json a
proposed 'a.net b c.net cases.csv nets' beliefs --case ''
proposed 'cases.csv' case a.net -o c
proposed 'a.net b c.net cases.csv nets' convert - ''
proposed '' beliefs -e ''
proposed '' bogus ''
[ "$(bash -c 'source "$1"; complete -p quarn' - "$file")" = 'complete -F _quarn quarn' ] || fail "not registered"

[ $failures -eq 0 ]
