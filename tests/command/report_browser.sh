#!/usr/bin/env bash
# quarn report in a browser: nothing is fetched or refused, bars have the lengths that they should, all in the width of a phone.
# usage: report_browser.sh QUARN SOURCE_DIR; exit status 77 where there is no Chromium
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

command -v chromium >/dev/null || exit 77
"$quarn" report "$oil" --solve -e test=yes -o "$work/page.html" || fail "no report"
browse() {
    timeout 50 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
        --disable-component-update --disable-sync --user-data-dir="$work/profile" --window-size=500,900 \
        --enable-logging=stderr "$@" 2>"$work/said"
}

# The page forbids itself to fetch and to run anything; the browser would say on the console what it refused.
browse --dump-dom "file://$work/page.html" >"$work/dom" || fail "chromium failed: $(cat "$work/said")"
grep -q '<h1>Oil wildcatter</h1>' "$work/dom" || fail "the page is not shown"
! grep CONSOLE "$work/said" || fail "something on the console"
grep -q "default-src 'none'" "$work/page.html" || fail "the page does not forbid anything"

# The same page measures itself.
{
    sed '/Content-Security-Policy/d; /<\/body>/,$d' "$work/page.html"
    cat <<'END_OF_PAGE'
<script>
const width = shown => shown.getBoundingClientRect().width;
const bars = [...document.querySelectorAll(".bar i")].map(bar => (width(bar) / width(bar.parentNode)).toFixed(2));
const picture = [...document.querySelectorAll("svg .bar")].map(width).filter(length => length > 0).length;
document.body.textContent = `bars ${bars.join(" ")} picture ${picture} fits ${document.documentElement.scrollWidth <= innerWidth}`;
</script></body></html>
END_OF_PAGE
} >"$work/measure.html"
browse --dump-dom "file://$work/measure.html" >"$work/dom"
[[ $(cat "$work/dom") == *'bars 0.41 0.35 0.24 0.00 0.59 0.41 0.50 0.30 0.20 1.00 0.00 picture 9 fits true'* ]] ||
    fail "measured: $(tail -3 "$work/dom")"

[ $failures -eq 0 ]
