#!/usr/bin/env bash
# What helps people: examples that run as they stand, names that may have been meant, emphasis on terminals only.
# usage: help.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

cp "$2"/examples/*.* "$work" && mkdir "$work/bin" && ln -s "$(realpath "$quarn")" "$work/bin/quarn" && cd "$work" || exit 1
PATH=$work/bin:$PATH

commands=$(quarn --help | sed -nE 's/^  ([a-z]+)  +[A-Z].*/\1/p')
for asked in $commands; do
    quarn "$asked" --help | sed -n '/^Example/,$s/^  //p' >example
    [ -s example ] || fail "quarn $asked: no example"
    ! grep -qw dot example || command -v dot >/dev/null || continue
    bash -eu -o pipefail example >out 2>err </dev/null || fail "quarn $asked: $(cat example err)"
    ! quarn "$asked" --help | grep -E '.{81}' || fail "quarn $asked: long lines in the help"
done

expect 2 'quarn: unknown command belifes; did you mean beliefs?' belifes
expect 2 'quarn: unknown command solv; did you mean solve?' solv
expect 1 'there is no node smokin; did you mean smoking?' beliefs "$clinic" -e smokin=yes
whole=yes expect 1 "quarn: $clinic: there is no node xyz" beliefs "$clinic" --nodes xyz
whole=yes expect 2 'quarn: unknown command x' x
{
    echo before
    quarn case "$clinic" -e asia=yes -o - >>appended
} >appended
[ "$(head -1 appended)" = before ] && [ "$(wc -l <appended)" = 2 ] || fail "case -o - did not append: $(cat appended)"
expect 2 'quarn: --log needs a file' compile "$clinic" --log -

# --- Emphasis. Texts are the same without it.
if command -v script >/dev/null; then
    bold=$'\e[1m' red=$'\e[1;31m' end=$'\e[m'
    terminal() {  # ENVIRONMENT WANTED COMMAND
        env -u NO_COLOR TERM=xterm "$1" script -qec "$3" /dev/null </dev/null | tr -d '\r' >out
        diff <(printf '%s\n' "$2") out || fail "terminal: $1 $3"
    }
    terminal A=1 "${red}quarn:$end unknown command x"$'\nRun with --help for more information.' 'quarn x'
    for plain in NO_COLOR=1 TERM=dumb; do
        terminal $plain $'quarn: unknown command x\nRun with --help for more information.' 'quarn x'
    done
    quarn beliefs chest_clinic.net -n asia >plain
    terminal A=1 "$(sed "1s/asia/$bold&$end/" plain)" 'quarn beliefs chest_clinic.net -n asia'
    terminal A=1 "$(cat plain)" 'quarn beliefs chest_clinic.net -n asia | cat'
fi

[ $failures -eq 0 ]
