"""Results for many rows of evidence.

A column of the rows is a node; a cell is what is known of it in this row, as in Domain.evidence. None, NaN and empty texts
say nothing. Columns of utilities and functions are not used, with a warning: these are computed. Other evidence of the
domain holds in all rows, and all is as it was afterwards. The result has a row for each, with the same index, and these
columns:

    NODE=STATE                 beliefs of a discrete node
    NODE:mean, NODE:variance   of a continuous node, the first also of one whose states stand for numbers
    NODE:expected              of a utility
    NODE                       value of a real-valued function
    log_p                      logarithm of the probability of the evidence
    error                      what is wrong with the row, which has no results then; else None
"""

import warnings
from typing import TYPE_CHECKING, Any, Callable, Iterable, Iterator, Sequence

from ._constants import Category, Equilibrium, Kind, Mode
from ._library import lib, number
from .errors import OutOfMemory, QuarnError
from .evidence import enter
from .frames import frame, is_missing, read_rows
from .node import Node, NodeOrName
from .states import state_text

if TYPE_CHECKING:
    from .domain import Domain

NAN = float("nan")
_UNKNOWN = object()  # what is entered after a failure


def batch(
    domain: "Domain",
    rows: Any,
    targets: "Sequence[NodeOrName] | NodeOrName | None" = None,
    keep: "Sequence[str] | str | None" = None,
) -> Any:
    """Results for each row of a DataFrame, or of a list of mappings, as a DataFrame; without pandas a list of dicts.

    targets  the nodes to tell of; all but those with a column when it is None
    keep     columns to copy into the result, which are no evidence, even where they are called like a node

    >>> import quarn
    >>> domain = quarn.Domain.load("examples/chest_clinic.net")
    >>> print(domain.batch([{"xray": "yes"}, {"xray": "no"}], ["cancer"]).round(4).to_string())
       cancer=yes  cancer=no   log_p error
    0      0.4887     0.5113 -2.2046  None
    1      0.0012     0.9988 -0.1169  None
    """
    names, listed, index = read_rows(rows)
    kept = [keep] if isinstance(keep, str) else list(dict.fromkeys(keep or []))
    for name in kept:
        if name not in names:
            raise KeyError(f"there is no column {name!r}")
    with domain._changing():
        evidence = _observed(domain[name] for name in names if name not in kept)
        if targets is None:
            asked = [node for node in domain.nodes if node not in evidence.values()]
        else:
            wanted = [targets] if isinstance(targets, (str, Node)) else targets
            asked = list(dict.fromkeys(domain[target] for target in wanted))
        results = [result for node in asked for result in _results(node)]
        results.append(("log_p", lambda: float(domain._call(lib.q_domain_get_log_normalization_constant))))
        taken = {"error", *(name for name, _ in results)}
        for name in kept:
            if name in taken:
                raise ValueError(f"column {name!r} cannot be kept: a result is called so")
        columns: "dict[str, list[Any]]" = {name: [row.get(name) for row in listed] for name in kept}
        columns.update({name: [] for name, _ in results})
        columns["error"] = []
        before = dict(domain.evidence)
        try:
            _fill(domain, evidence, listed, results, columns)
        finally:
            domain.evidence.replace(before)
    return frame(columns, index)


def _observed(nodes: "Iterable[Node]") -> "dict[str, Node]":
    evidence = {}
    for node in nodes:
        if node.kind == Kind.OTHER or node.category == Category.FUNCTION:
            warnings.warn(f"column {node.name} is not used: the node is computed", stacklevel=4)
        else:
            evidence[node.name] = node
    return evidence


def _fill(domain: "Domain", evidence: Any, rows: Any, results: Any, columns: "dict[str, list[Any]]") -> None:
    entered: "dict[str, Any]" = dict.fromkeys(evidence, _UNKNOWN)
    for row in rows:
        try:
            _enter_changes(evidence, row, entered)
            domain._propagate(Equilibrium.SUM, Mode.NORMAL)
            numbers = [read() for _, read in results]
            error = None
        except OutOfMemory:
            raise
        except (QuarnError, ValueError, TypeError, OverflowError) as failure:
            numbers, error = [NAN] * len(results), str(failure)
        for (name, _), result in zip(results, numbers):
            columns[name].append(result)
        columns["error"].append(error)


def _enter_changes(evidence: "dict[str, Node]", row: Any, entered: "dict[str, Any]") -> None:
    for name, node in evidence.items():
        cell = row.get(name)
        if hasattr(cell, "tolist"):  # of numpy: compared below as a whole
            cell = cell.tolist()
        cell = None if is_missing(cell) else cell
        if entered[name] is _UNKNOWN or type(cell) is not type(entered[name]) or cell != entered[name]:
            entered[name] = _UNKNOWN
            enter(node, cell)
            entered[name] = cell


def _results(node: "Node") -> "Iterator[tuple[str, Callable[[], float]]]":
    name, pointer = node.name, node._pointer

    def reader(function: Any, *arguments: Any) -> "Callable[[], float]":
        return lambda: number(function, pointer, *arguments)

    def value() -> float:
        try:
            return reader(lib.q_node_get_value)()
        except QuarnError:
            return NAN

    if node.kind == Kind.DISCRETE:
        for index, state in enumerate(node.states):
            yield f"{name}={state_text(state)}", reader(lib.q_node_get_belief, index)
        if node.values:
            yield f"{name}:mean", reader(lib.q_node_get_numeric_mean)
    elif node.kind == Kind.CONTINUOUS:
        yield f"{name}:mean", reader(lib.q_node_get_mean)
        yield f"{name}:variance", reader(lib.q_node_get_variance)
    elif node.category == Category.UTILITY:
        yield f"{name}:expected", reader(lib.q_node_get_expected_utility, 0)
    else:
        yield name, value
