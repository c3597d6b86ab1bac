# shellcheck shell=bash disable=SC2034
# What the tests of the command begin with, sourced with their own arguments: QUARN SOURCE_DIR.
set -uo pipefail
quarn=$1
clinic=$2/examples/chest_clinic.net
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
