"""Cases at random."""

import math
from operator import index
from typing import TYPE_CHECKING, Any, Callable

from ._constants import Category, Equilibrium, Kind, Mode
from ._library import call, lib
from .errors import QuarnError
from .frames import frame
from .node import Node
from .states import name_states

if TYPE_CHECKING:
    from .domain import Domain


def sample(domain: "Domain", n: int, seed: "int | None") -> Any:
    """Cases at random given the evidence, one in each row."""
    if n < 0:
        raise ValueError("the number of cases must not be negative")
    with domain._guard:
        if seed is not None:
            domain._call(lib.q_domain_seed_random, index(seed) % 2**30)
        columns = {node.name: (node, _reader(node)) for node in domain.nodes}
        ready: Any = domain._guard
        if _needs_trees(domain):
            ready = domain._results((Equilibrium.SUM, Mode.NORMAL))
        with ready:
            drawn: "dict[str, list[Any]]" = {name: [] for name in columns}
            for _ in range(n):
                domain._call(lib.q_domain_simulate)
                for name, (node, read) in columns.items():
                    drawn[name].append(read(node._pointer))
        return frame(drawn)


def _needs_trees(domain: "Domain") -> bool:
    # Without evidence nodes can be drawn given their parents, in networks too large to be compiled.
    if domain._call(lib.q_domain_is_compiled):
        return True
    if any(node.kind == Kind.DISCRETE for node in domain._of_category(Category.FUNCTION)):
        return True
    return any(domain[name].category != Category.DECISION for name in domain.evidence)


def _reader(node: Node) -> "Callable[[Any], Any]":
    if node.kind == Kind.DISCRETE:
        states = name_states(node._pointer)
        return lambda pointer: states[call(lib.q_node_get_sampled_state, pointer)]
    if node.category == Category.UTILITY:
        return lambda pointer: call(lib.q_node_get_sampled_utility, pointer)
    if node.category == Category.FUNCTION:
        return _value_or_nan
    return lambda pointer: call(lib.q_node_get_sampled_value, pointer)


def _value_or_nan(pointer: Any) -> float:
    try:
        return float(call(lib.q_node_get_sampled_value, pointer))
    except QuarnError:
        return math.nan
