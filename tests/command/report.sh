#!/usr/bin/env bash
# quarn report: one well-formed page without anything from elsewhere; its beliefs, policies and faults.
# usage: report.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

mkdir "$work/bare" && ln -s "$(command -v tr)" "$(command -v sed)" "$work/bare" && bare=$work/bare  # no dot in it
command=report
printf 'net { title = "</title><script>"; } node a { label = "<script>x()</script>"; states = ("\\"><img src=x>" "y"); }
potential (a) { data = (-1 2); }' >"$work/hostile.net"

PATH=$bare expect 0 'There is no picture: dot, which lays out pictures, is not installed' "$clinic" -o -
expect 0 'The network cannot be computed.' "$work/hostile.net" -o -
expect 0 'quarn: warning: ' "$work/hostile.net" -o "$work/hostile.html"
expect 1 'the evidence is impossible' "$clinic" -e tuberculosis=yes either=no -o "$work/none.html"
expect 1 'the network has no decisions' "$clinic" --solve -o "$work/none.html"
expect 2 '--output is required' "$clinic"
[ ! -e "$work/none.html" ] || fail "a page was written"
"$quarn" report "$clinic" -e asia=yes 'smoking=(0.8 0.2)' -o "$work/clinic.html" &&
    "$quarn" report "$clinic" -e asia=yes 'smoking=(0.8 0.2)' -o - 2>/dev/null | cmp - "$work/clinic.html" || fail "line $LINENO"
"$quarn" report "$oil" --solve -e test=no -o "$work/oil.html" && "$quarn" report "$waste" -e light=1.1 -o "$work/waste.html" &&
    "$quarn" report "$2/examples/car_insurance.net" -o "$work/car.html" || fail "line $LINENO"

! command -v python3 >/dev/null || python3 - "$work" <<'END_OF_TEST' || fail "line $LINENO"
import re, sys
from html.parser import HTMLParser

class Page(HTMLParser):
    """Elements that are closed as they were opened, and the texts of table rows."""
    def __init__(self, name):
        super().__init__()
        self.open, self.tags, self.rows, self.widths = [], [], [], []
        self.text = open(f"{sys.argv[1]}/{name}.html", encoding="utf-8").read()
        self.feed(self.text)
        assert not self.open and {"h1", "main", "section"} <= set(self.tags) and "<script" not in self.text.lower()
        assert not re.search(r'(src|href)="|url\(|@import', self.text), name

    def handle_starttag(self, tag, attributes):
        self.tags.append(tag)
        if tag != "meta":
            self.open.append(tag)
        if tag == "tr":
            self.rows.append([])
        if tag in ("th", "td"):
            assert tag == "td" or ("scope" in dict(attributes))
            self.rows[-1].append("")
        if tag == "i":
            self.widths.append(dict(attributes)["style"])

    def handle_endtag(self, tag):
        assert self.open.pop() == tag

    def handle_data(self, data):
        if "tbody" in self.open and ("th" in self.open or "td" in self.open):
            self.rows[-1][-1] += data

clinic = Page("clinic")
assert ["yes", "", "5.0%"] in clinic.rows and "width:5%" in clinic.widths and ["yes", "", "100%"] in clinic.rows
order = [clinic.text.index(f"<caption><span class=\"moved\">{what}") for what in ("likelihood", "moved", "observed")]
assert order == sorted(order) and "P(evidence)</dt>" in clinic.text
oil, waste, car = Page("oil"), Page("waste"), Page("car")
assert ["no", "not tested", "yes"] in oil.rows and ["no", "none", "(cannot occur)"] in oil.rows
assert ["Profit from drilling profit", "20"] in oil.rows and ["Cost of the test test_cost", "0"] in oil.rows
assert [row for row in waste.rows if row[:1] == ["Light penetrability light observed"]][0][1:4] == ["1.1", "0", "0"]
assert ["Basic premium basic", "400"] in car.rows and "could not be computed" in car.text
assert "&lt;script&gt;" in Page("hostile").text
END_OF_TEST

[ $failures -eq 0 ]
