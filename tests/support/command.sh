# shellcheck shell=bash disable=SC2034
# What the tests of the command begin with, sourced with their own arguments: QUARN SOURCE_DIR.
set -uo pipefail
quarn=$1
clinic=$2/examples/chest_clinic.net
oil=$2/examples/oil_wildcatter.net
waste=$2/examples/waste_incinerator.net
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
exec </dev/null

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# expect STATUS TEXT ARGUMENT...: runs quarn, or its command $command, whose outputs must have this text, blanks single and
# times T. Where $whole is set they must be just that, but for the hint at --help.
expect() {
    local status=$1 wanted actual said
    wanted=$(tr -s ' ' <<<"$2")
    shift 2
    "$quarn" ${command:+"$command"} "$@" >"$work/out" 2>"$work/err"
    actual=$?
    said=$(sed -E 's/  +/ /g; s/(ms )[0-9.e-]+$/\1T/' "$work/out" "$work/err")
    said=${said%$'\nRun with --help for more information.'}
    [ $actual -eq "$status" ] && [[ $said == "$wanted" || (-z ${whole-} && $said == *"$wanted"*) ]] && return
    fail "quarn ${command-} $*: status $actual"$'\n'"$said"
}
