"""Policies of decisions."""

from typing import TYPE_CHECKING

from . import _numbers
from ._constants import Category, Equilibrium, Mode
from ._library import call, lib
from .table import write

if TYPE_CHECKING:
    from ._numbers import Numbers
    from .domain import Domain


def solve(domain: "Domain", start: str) -> "dict[str, Numbers]":
    """Improves the policies of the open decisions; the new ones."""
    if start not in ("uniform", "tables"):
        raise ValueError(f"{start!r} is none of uniform, tables")
    with domain._changing():
        decisions = [node for node in domain._of_category(Category.DECISION) if not _is_made(node._pointer)]
        if start == "uniform":
            for node in decisions:
                write(node, 1.0)
        domain._propagate(Equilibrium.SUM, Mode.NORMAL)
        domain._wanted = (Equilibrium.SUM, Mode.NORMAL)
        domain._stale = True
        domain._call(lib.q_domain_update_policies)
        domain._lent.remember()
        domain._stale = False
        return {node.name: _numbers.copy(node.table) for node in decisions}


def _is_made(decision: object) -> bool:
    return bool(call(lib.q_node_evidence_is_entered, decision))
