"""How domains and nodes are shown in a notebook."""

import html
import os
import shutil
import subprocess
import tempfile
from pathlib import Path
from typing import TYPE_CHECKING

from ._constants import Category, Kind
from .errors import QuarnError
from .states import state_text

if TYPE_CHECKING:
    from .domain import Domain
    from .node import Node

NODES_SHOWN = 50
BUNDLED_COMMAND = Path(__file__).parent / "bin" / "quarn"


def command() -> "str | None":
    """The command quarn: that of the package, or one on the path."""
    return str(BUNDLED_COMMAND) if BUNDLED_COMMAND.exists() else shutil.which("quarn")


def domain_svg(domain: "Domain") -> "str | None":
    """The network drawn, with its evidence; None without the command, without Graphviz, or when it cannot be drawn."""
    drawer = command()
    if drawer is None or len(domain) == 0:
        return None
    try:
        with tempfile.TemporaryDirectory() as folder:
            case = os.path.join(folder, "evidence.case")
            with domain._guard:
                net = domain.to_net()
                domain.save_case(case)
            drawn = subprocess.run(
                [drawer, "draw", "-", "--case", case],
                input=net.encode("utf-8", "surrogateescape"),
                capture_output=True,
                check=True,
                timeout=60,
            )
    except (OSError, QuarnError, subprocess.SubprocessError):
        return None
    return drawn.stdout.decode("utf-8", "replace")


def domain_html(domain: "Domain") -> str:
    """The results of the first nodes, one table below the other."""
    nodes = domain.nodes
    parts = [node_html(node) for node in nodes[:NODES_SHOWN]]
    if len(nodes) > NODES_SHOWN:
        parts.append(f"<p>… and {len(nodes) - NODES_SHOWN} more nodes</p>")
    return "".join(parts)


def node_html(node: "Node") -> str:
    """A table of what is known of a node: beliefs with bars, or a mean, a value or a utility."""
    title = html.escape(_printable(f"{node.name} ({node.label})" if node.label else node.name))
    try:
        rows = "".join(_rows(node))
    except (QuarnError, ValueError) as error:
        rows = f"<tr><td>{html.escape(str(error))}</td></tr>"
    return f"<table><caption>{title}</caption>{rows}</table>"


def _rows(node: "Node") -> "list[str]":
    if node.kind == Kind.DISCRETE:
        return [_bar(state_text(state), belief) for state, belief in node.beliefs.items()]
    if node.kind == Kind.CONTINUOUS:
        return [_row("mean", node.mean), _row("variance", node.variance)]
    if node.category == Category.UTILITY:
        return [_row("expected", float(node.expected_utility))]
    return [_row("value", node.value)]


def _row(name: str, number: float) -> str:
    return f"<tr><td>{name}</td><td>{number:.6g}</td></tr>"


def _bar(state: str, belief: float) -> str:
    width = f"{100 * max(0.0, min(1.0, belief)):.1f}px"
    bar = f'<div style="background:#4c78a8;height:0.8em;width:{width}"></div>'
    name = html.escape(_printable(state))
    return f'<tr><td>{name}</td><td>{belief:.6g}</td><td style="width:100px">{bar}</td></tr>'


def _printable(text: str) -> str:
    return text.encode("utf-8", "replace").decode("utf-8")
