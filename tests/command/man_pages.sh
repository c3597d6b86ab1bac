#!/usr/bin/env bash
# The manual pages: without a warning, with every option that the help has, one for each command.
# usage: man_pages.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

pages=$(dirname "$quarn")/documents/man1
commands=$("$quarn" --help | sed -nE 's/^  ([a-z]+)  +[A-Z].*/\1/p' | grep -v '^OPTIONS')
[ "$(wc -w <<<"$commands")" -ge 8 ] || fail "few commands: $commands"
for name in quarn $(printf 'quarn-%s ' $commands); do
    page=$pages/$name.1 words=${name#quarn}
    [ -s "$page" ] || fail "$name has no page"
    if command -v groff >/dev/null; then  # 7 columns of margin before examples
        warnings=$(groff -man -Tutf8 -P-cbou -ww -k "$page" 2>&1 >"$work/text")
        [ -z "$warnings" ] || fail "$name: $warnings"
        ! LC_ALL=C.UTF-8 grep -E '.{87}' "$work/text" || fail "$name: long lines"
    fi
    # The first column of the options, without what goes after them.
    for option in $("$quarn" ${words#-} --help | sed -n '/^Options:/,/^$/s/^  \(-[^ ]*\).*/\1/p' | tr , ' '); do
        grep -qF -- "\\fB${option//-/\\-}\\fR" "$page" || fail "$name: no $option"
    done
    for section in NAME SYNOPSIS DESCRIPTION OPTIONS 'EXIT STATUS' 'SEE ALSO'; do
        [ "$(grep -cx "\\.SH $section" "$page")" = 1 ] || fail "$name: not one $section"
    done
    [ "$name" = quarn ] || grep -q '^\.SH EXAMPLES' "$page" || fail "$name: no examples"
done

[ $failures -eq 0 ]
