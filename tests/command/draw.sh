#!/usr/bin/env bash
# quarn draw: a card for each node and a line for each link, bars as long as beliefs say, evidence and sorts of nodes, hostile
# texts, what cannot be computed.
# usage: draw.sh QUARN SOURCE_DIR
# shellcheck source=tests/support/command.sh
source "$2/tests/support/command.sh"

mkdir "$work/bare" && ln -s "$(command -v tr)" "$(command -v sed)" "$work/bare" && bare=$work/bare  # no dot in it
command=draw car=$2/examples/car_insurance.net

printf 'net { title = "<\\"&>"; }
node node { label = "<b>&\\"]]>--></title>\033\001"; states = ("<i>" "a\\"b" "&amp;"); } potential (node) { data = (1 2 3); }
node graph { label = "\xff\xef\xbf\xbe\xc3"; states = (%s); } potential (graph | node) { }
node strict { states = ("x" "y"); } node edge { states = ("x" "y"); } potential (strict edge | graph) { }' \
    "$(printf '"state %d " ' {1..30})" >"$work/hostile.net"
sed 's/0.01 0.99/0.01 -0.99/' "$clinic" >"$work/broken.net"
printf 'continuous node a {} continuous node b {}
potential (a) { data = (normal(1e300, 1)); } potential (b | a) { data = (normal(1e300 * a, 1)); }' >"$work/far.net"

# --- The text for dot, which needs no dot. Without one there is no picture, and no file.
PATH=$bare expect 0 $'"smoking" -> "cancer";\n' "$clinic" --dot
PATH=$bare expect 0 '"test" -> "drill" [style=dashed];' "$oil" --dot
PATH=$bare expect 0 '"basic" -> "premium" [style=dotted];' "$car" --dot
PATH=$bare expect 0 '"strict" -> "edge" [dir=none' "$work/hostile.net" --dot
PATH=$bare expect 1 'dot, which lays out pictures, is not installed: on Debian it is in the package graphviz' "$clinic" -o "$work/none.svg"
[ ! -e "$work/none.svg" ] || fail "a picture without dot"

# --- Impossible evidence is no picture, a broken network one without beliefs; what cannot be done, wrong command lines
expect 1 'the evidence is impossible' "$clinic" -e tuberculosis=yes either=no --dot
expect 0 'quarn: warning: drawn without beliefs: ' "$work/broken.net" -e xray=yes --dot
expect 0 'inf ± N/A' "$work/far.net" --dot
expect 1 'there is no node lungs' "$clinic" --nodes asia,lungs
expect 1 'cannot be written' "$clinic" --plain --dot -o "$work/none/x.dot"
expect 2 'given twice' "$clinic" -e asia=yes asia=no

command -v dot >/dev/null || { echo "no dot: pictures are not tested"; exit $failures; }
for model in "$clinic" "$oil" "$waste" "$car" "$work/hostile.net"; do
    "$quarn" draw "$model" --dot 2>"$work/err" | dot -Tsvg 2>&1 >/dev/null | grep . && fail "dot complains of $model"
done
! command -v python3 >/dev/null || python3 - "$quarn" "$2/examples" "$work" <<'END_OF_TEST' || fail "line $LINENO"
import json, subprocess, sys, xml.etree.ElementTree as xml
quarn, examples, work = sys.argv[1:]
svg = "{http://www.w3.org/2000/svg}"

def run(*arguments):
    return subprocess.run([quarn, *arguments], check=True, capture_output=True).stdout

def parts(where, style):
    return [part for part in where.iter() if style in part.get("class", "").split()]

def draw(*arguments):
    page = xml.fromstring(run("draw", *arguments))
    assert page.get("viewBox") == f"0 0 {page.get('width')} {page.get('height')}"
    return page, {card.find(svg + "title").text.split(":")[0].split(" (")[-1].rstrip(")"): card for card in parts(page, "node")}

def links(page):
    return {link.find(svg + "title").text: parts(link, "link")[0].get("class") for link in parts(page, "edge")}

evidence = ["-e", "asia=yes", "dyspnoea=(0.9 0.2)"]
page, cards = draw(examples + "/chest_clinic.net", *evidence)
beliefs = json.loads(run("beliefs", examples + "/chest_clinic.net", "--json", *evidence))["beliefs"]
assert list(cards) == list(beliefs) and page.find(svg + "title").text == "Chest clinic"
assert sorted(links(page)) == sorted(f"{a} \u2192 {b}" for a, b in [
    ("asia", "tuberculosis"), ("smoking", "cancer"), ("smoking", "bronchitis"), ("tuberculosis", "either"),
    ("cancer", "either"), ("either", "xray"), ("either", "dyspnoea"), ("bronchitis", "dyspnoea")])
for name, card in cards.items():
    assert ("evidence" in card.get("class")) == (name in ("asia", "dyspnoea"))
    for row, state, belief in zip(parts(card, "row"), beliefs[name]["states"], beliefs[name]["beliefs"], strict=True):
        bar, track = (sum(float(part.get("width")) for part in parts(row, style)) for style in ("bar", "track"))
        assert parts(row, "label")[0].text == state and abs(bar / track - belief) < 1e-3, (name, state)
    assert [text.text for text in parts(card, "mark")] == {"asia": ["observed"], "dyspnoea": ["likelihood"]}.get(name, [])
assert [text.text for text in parts(cards["dyspnoea"], "beside")] == ["\u00d70.9", "\u00d70.2"]

page, cards = draw(examples + "/oil_wildcatter.net")
assert [card.get("class") for card in cards.values()] == ["node " + sort for sort in
        ("decision", "chance", "chance", "decision", "utility", "utility")]
assert links(page)["seismic \u2192 drill"] == "link informational" and links(page)["oil \u2192 profit"] == "link"
assert [text.text for text in parts(cards["profit"], "number")] == ["10"]
page, cards = draw(examples + "/waste_incinerator.net", "-e", "light=1.1")
assert parts(cards["light"], "spike") and parts(cards["dust"], "bell") and "\u00b1" in parts(cards["dust"], "number")[0].text
page, cards = draw(examples + "/car_insurance.net")
assert parts(cards["deductible"], "missing") and set(links(page).values()) == {"link", "link functional"}

page, cards = draw(work + "/hostile.net")
assert links(page)["strict \u2013 edge"] == "link undirected" and page.get("aria-label") == "<\"&>"
assert [text.text for text in parts(cards["graph"], "label")][-1] == "\u2026 22 more"
assert parts(cards["node"], "title")[0].text.startswith('<b>&"]]>') and parts(cards["graph"], "title")[0].text == "\\xff\ufffd\\xc3"
page, cards = draw(work + "/broken.net", "--nodes", "asia,tuberculosis", "-e", "asia=yes")
assert len(cards) == 2 and len(links(page)) == 1 and parts(page, "mark") and not parts(page, "bar")
page, cards = draw(work + "/broken.net", "--plain")
assert len(cards) == 8 and len(links(page)) == 8 and not parts(page, "row")
END_OF_TEST

[ $failures -eq 0 ]
