"""Most probable configurations."""

import math
from typing import TYPE_CHECKING, NamedTuple

from ._constants import Equilibrium, Mode
from ._library import call, lib
from .states import State

if TYPE_CHECKING:
    from .domain import Domain
    from .node import Node

_NEARLY_ONE = 1 - 1e-9


class Configuration(NamedTuple):
    """A most probable configuration: the states of all nodes, and the probability of them with the evidence."""

    states: "dict[str, State]"
    probability: float
    log_probability: float


def most_probable(domain: "Domain") -> Configuration:
    """A most probable configuration of all nodes. Entered evidence is the same afterwards."""
    with domain._changing():
        nodes = domain.nodes
        before = [_weights(node) for node in nodes]
        try:
            domain._propagate(Equilibrium.MAX, Mode.NORMAL)
            # The best states of several nodes need not go together while one of them has others that are as good.
            for node in nodes:
                beliefs = node._beliefs()
                best = max(range(len(beliefs)), key=beliefs.__getitem__)
                if sum(belief > _NEARLY_ONE for belief in beliefs) > 1:
                    _rule_out_others(node, best)
                    domain._propagate(Equilibrium.MAX, Mode.NORMAL)
            states = {}
            for node in nodes:
                beliefs = node._beliefs()
                states[node.name] = node.states[beliefs.index(max(beliefs))]
            logarithm = domain._call(lib.q_domain_get_log_normalization_constant)
            return Configuration(states, math.exp(logarithm), logarithm)
        finally:
            for node, weights in zip(nodes, before):
                for state, weight in enumerate(weights):
                    call(lib.q_node_enter_finding, node._pointer, state, weight)
            domain._stale = True


def _weights(node: "Node") -> "list[float]":
    count = len(node.states)
    return [call(lib.q_node_get_entered_finding, node._pointer, state) for state in range(count)]


def _rule_out_others(node: "Node", kept: int) -> None:
    # The state keeps its weight, which counts in the probability.
    for state in range(len(node.states)):
        if state != kept:
            call(lib.q_node_enter_finding, node._pointer, state, 0.0)
