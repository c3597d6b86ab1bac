"""What notebooks show."""

import os
import shutil
import xml.etree.ElementTree as ET

import pytest

import quarn
import quarn.display


def test_html_is_escaped():
    with quarn.Domain() as domain:
        node = domain.add_chance("a", ["<script>", "b & \udce9"], table=[0.25, 0.75], label='"<i>"')
        domain.add_continuous("x", mean=2)
        page = domain._repr_html_()
        assert "<script" not in page and "<i>" not in page and "25.0px" in page and "0.75" in page
        ET.fromstring(f"<p>{page}</p>".encode())
        assert node._repr_html_() in page
        node.table = [0, 0]
        assert "<td>" in node._repr_html_()
    assert domain._repr_html_() is None and node._repr_html_() is None
    with quarn.Domain() as domain:
        domain.add_utility("gain", table=[3])
        assert "no discrete" in domain._repr_html_()


def test_svg(clinic, monkeypatch):
    with monkeypatch.context() as patch:
        patch.setattr(quarn.display, "command", lambda: None)
        assert clinic._repr_svg_() is None
    monkeypatch.setattr(quarn.display, "command", lambda: "/bin/false")
    assert clinic._repr_svg_() is None
    monkeypatch.undo()
    built = os.path.join(os.environ.get("QUARN_BUILD_DIR", ""), "tools", "quarn")
    if not os.path.exists(built) or shutil.which("dot") is None:
        pytest.skip("no command or no Graphviz")
    monkeypatch.setattr(quarn.display, "command", lambda: built)
    clinic.evidence["xray"] = "yes"
    drawn = clinic._repr_svg_()
    assert ET.fromstring(drawn.encode()).tag.endswith("svg") and "xray" in drawn
