"""What is known of the nodes of a domain."""

import math
import sys
from typing import TYPE_CHECKING, Any, Iterator, Mapping, MutableMapping, Sequence, Union

from ._constants import Category, Kind
from ._library import call, lib
from .states import State, find_state, name_states

if TYPE_CHECKING:
    from .domain import Domain
    from .node import Node, NodeOrName

Finding = Union[State, "tuple[float, ...]"]


class Evidence(MutableMapping[str, Any]):
    """The evidence of a domain, by the names of nodes: ``domain.evidence``.

    A discrete node takes a state - a label, "#" and a number, True or False, or the number that the state stands for; in
    nodes whose states do not stand for numbers an int is the number of the state - or a likelihood, a sequence with a weight
    for each state. A continuous node takes its value. None says that nothing is known. A node is read back as what its
    state is called in Node.states, as its weights, or as its value.

    >>> import quarn
    >>> domain = quarn.Domain.load("examples/chest_clinic.net")
    >>> domain.evidence.update(asia="yes", xray=(0.9, 0.2))
    >>> domain.evidence
    {'asia': 'yes', 'xray': (0.9, 0.2)}
    >>> del domain.evidence["xray"]
    >>> round(domain["tuberculosis"].beliefs["yes"], 4)
    0.05
    """

    def __init__(self, domain: "Domain") -> None:
        self._domain = domain

    def __setitem__(self, node: "NodeOrName", finding: Any) -> None:
        with self._domain._changing():
            enter(self._domain[node], finding)

    def __getitem__(self, node: "NodeOrName") -> Finding:
        with self._domain._guard:
            known = self._domain[node]
            if not _is_entered(known):
                raise KeyError(f"nothing is known of node {known.name}")
            return _finding(known)

    def __delitem__(self, node: "NodeOrName") -> None:
        with self._domain._changing():
            known = self._domain[node]
            if not _is_entered(known):
                raise KeyError(f"nothing is known of node {known.name}")
            known._call(lib.q_node_retract_findings)

    def __iter__(self) -> "Iterator[str]":
        with self._domain._guard:
            return iter([node.name for node in self._domain.nodes if _is_entered(node)])

    def __len__(self) -> int:
        return sum(1 for _ in self)

    def __contains__(self, node: object) -> bool:
        with self._domain._guard:
            return node in self._domain and _is_entered(self._domain[node])  # type: ignore[index]

    def clear(self) -> None:
        """Removes all evidence."""
        with self._domain._changing():
            self._domain._call(lib.q_domain_retract_findings)

    def replace(self, findings: "Mapping[Any, Any]") -> None:
        """Replaces all evidence; as it was when some of the new one cannot be entered. Also: domain.evidence = {...}."""
        with self._domain._changing():
            before = dict(self)
            try:
                self.clear()
                self.update(findings)
            except BaseException:
                self.clear()
                self.update(before)
                raise

    def __repr__(self) -> str:
        return repr(dict(self))


def enter(node: "Node", finding: Any) -> None:
    """Enters what is known of a node; None retracts it."""
    pointer = node._live_pointer()
    if hasattr(finding, "tolist"):  # of numpy or pandas
        finding = finding.tolist()
    if finding is None:
        call(lib.q_node_retract_findings, pointer)
    elif not _takes_evidence(node):
        raise TypeError(f"node {node.name} takes no evidence: it is computed from others")
    elif node.kind == Kind.CONTINUOUS:
        call(lib.q_node_enter_value, pointer, _value(node, finding))
    elif isinstance(finding, Sequence) and not isinstance(finding, (str, bytes)):
        _enter_weights(node, _weights(node, finding))
    else:
        call(lib.q_node_select_state, pointer, find_state(pointer, finding))


def _value(node: "Node", finding: Any) -> float:
    try:
        value = float(finding)
    except (TypeError, ValueError, OverflowError):
        value = math.nan
    if not math.isfinite(value):
        raise ValueError(f"node {node.name} is continuous: its evidence is a number, not {finding!r}")
    return value


def _weights(node: "Node", finding: Any) -> "list[float]":
    try:
        return [float(weight) for weight in finding]
    except (TypeError, ValueError, OverflowError):
        raise ValueError(f"node {node.name}: weights are numbers, unlike {finding!r}") from None


def _enter_weights(node: "Node", weights: "list[float]") -> None:
    count = len(node.states)
    if len(weights) != count:
        raise ValueError(f"node {node.name} needs a weight for each of its {count} states, not {len(weights)}")
    if not all(0 <= weight < sys.float_info.max for weight in weights) or not any(weights):
        raise ValueError(f"node {node.name}: weights are finite, not negative, and not all 0")
    for state, weight in enumerate(weights):
        call(lib.q_node_enter_finding, node._pointer, state, weight)


def _takes_evidence(node: "Node") -> bool:
    return node.category != Category.UTILITY and node.kind != Kind.OTHER


def _is_entered(node: "Node") -> bool:
    return _takes_evidence(node) and node._call(lib.q_node_evidence_is_entered) == 1


def _finding(node: "Node") -> Finding:
    pointer = node._live_pointer()
    if node.kind == Kind.CONTINUOUS:
        return float(call(lib.q_node_get_entered_value, pointer))
    state: int = call(lib.q_node_get_selected_state, pointer)
    names = name_states(pointer)
    if state >= 0:
        return names[state]
    return tuple(float(call(lib.q_node_get_entered_finding, pointer, index)) for index in range(len(names)))
