"""What the states of discrete nodes are called, and which state is meant."""

import math
import sys
from numbers import Integral, Real
from typing import Any, Iterable, Sequence, Union

from ._constants import Subtype
from ._library import call, lib, to_bytes, to_text
from .errors import QuarnError

State = Union[str, float]


def name_states(node: Any) -> "tuple[State, ...]":
    """What selects each state: its label, else its number, else "#" and its index."""
    count = call(lib.q_node_get_number_of_states, node)
    return tuple(_name_state(node, index) for index in range(count))


def _name_state(node: Any, index: int) -> State:
    label = call(lib.q_node_get_state_label, node, index)
    text = to_text(label)
    if not _is_index(text) and call(lib.q_node_get_state_index_from_label, node, label) == index:
        return text
    if call(lib.q_node_get_subtype, node) == Subtype.NUMBER:
        try:
            value = call(lib.q_node_get_state_value, node, index)
            if call(lib.q_node_get_state_index_from_value, node, value) == index:
                return float(value)
        except QuarnError:  # values that are not set or do not increase
            pass
    return f"#{index}"


def _is_index(text: str) -> bool:
    return text.startswith("#") and text[1:].isdecimal()


def state_text(state: State) -> str:
    """What a state is called in a name of a column or on a page."""
    return state if isinstance(state, str) else repr(state).removesuffix(".0")


def find_state(node: Any, state: Any) -> int:
    """The index of the state that is meant.

    A text is "#" and an index, a label, or the number that a state stands for; a bool the state of a boolean node; a number
    what a state stands for, or in nodes whose states do not stand for numbers its index.
    """
    if isinstance(state, str):
        index = _find_text(node, state)
    elif isinstance(state, Real):
        index = _find_number(node, state)
    else:
        raise TypeError(f"node {_name(node)}: a state cannot be chosen by a {type(state).__name__}")
    if index is None:
        raise ValueError(f"node {_name(node)} has no state {state!r}; it has {_list_states(node)}")
    return index


def _name(node: Any) -> str:
    return to_text(lib.q_node_get_name(node))


def _list_states(node: Any) -> str:
    return ", ".join(repr(name) for name in name_states(node)[:10])


def _find_text(node: Any, text: str) -> "int | None":
    if _is_index(text):
        return _existing(node, int(text[1:]))
    index: int = call(lib.q_node_get_state_index_from_label, node, to_bytes(text))
    if index >= 0:
        return index
    if _stands_for_numbers(node):
        try:
            return _find_value(node, float(text))
        except ValueError:
            return None
    return None


def _find_number(node: Any, number: Any) -> "int | None":
    if isinstance(number, bool):
        if call(lib.q_node_get_subtype, node) != Subtype.BOOLEAN:
            raise TypeError(f"node {_name(node)} is not boolean; it has {_list_states(node)}")
        return int(number)
    if _stands_for_numbers(node):
        return _find_value(node, float(number))
    if not float(number).is_integer():
        return None
    index = int(number)
    labelled = call(lib.q_node_get_state_index_from_label, node, str(index).encode())
    if labelled >= 0 and labelled != index:
        raise ValueError(
            f"node {_name(node)}: {index} may be the label '{index}' or the state '#{index}':"
            " write one of them"
        )
    return _existing(node, index)


def _stands_for_numbers(node: Any) -> bool:
    return call(lib.q_node_get_subtype, node) in (Subtype.NUMBER, Subtype.INTERVAL)


def _find_value(node: Any, value: float) -> "int | None":
    index: int = call(lib.q_node_get_state_index_from_value, node, value)
    return index if index >= 0 else None


def _existing(node: Any, index: int) -> "int | None":
    return index if 0 <= index < call(lib.q_node_get_number_of_states, node) else None


def set_states(node: Any, states: Any) -> None:
    """Gives a discrete node its states: labels, numbers, bool for false and true, or how many there are."""
    if states is bool:
        call(lib.q_node_set_number_of_states, node, 2)
        call(lib.q_node_set_subtype, node, Subtype.BOOLEAN)
        return
    if isinstance(states, Integral) and not isinstance(states, bool):
        call(lib.q_node_set_number_of_states, node, _count(int(states)))
        return
    if isinstance(states, (str, set, frozenset)):
        raise TypeError("states must be a list of labels or of numbers, bool, or a count")
    states = list(states)
    if states and all(isinstance(state, str) for state in states):
        labels = [to_bytes(state) for state in states]
        _set_count(node, len(labels), Subtype.LABEL)
        for index, label in enumerate(labels):
            call(lib.q_node_set_state_label, node, index, label)
    elif states and all(isinstance(state, Real) for state in states):
        _require_increasing(states)
        if not all(math.isfinite(state) for state in states):
            raise ValueError("the numbers that states stand for must be finite")
        _set_count(node, len(states), Subtype.NUMBER)
        _set_values(node, states)
    else:
        raise TypeError("states must be a list of labels or of numbers, bool, or a count")


def set_bounds(node: Any, bounds: "Iterable[float]") -> None:
    """Makes the states of a discrete node intervals, one between each two neighbouring bounds."""
    numbers = list(bounds)
    _require_increasing(numbers)
    _set_count(node, len(numbers) - 1, Subtype.INTERVAL)
    _set_values(node, [math.copysign(sys.float_info.max, bound) if math.isinf(bound) else bound for bound in numbers])


def _set_count(node: Any, count: int, subtype: Subtype) -> None:
    call(lib.q_node_set_subtype, node, Subtype.LABEL)  # a boolean node would keep its two states
    call(lib.q_node_set_number_of_states, node, _count(count))
    call(lib.q_node_set_subtype, node, subtype)


def _set_values(node: Any, values: "Sequence[float]") -> None:
    for index, value in enumerate(values):
        call(lib.q_node_set_state_value, node, index, value)


def _require_increasing(numbers: "Sequence[float]") -> None:
    if any(not first < second for first, second in zip(numbers, numbers[1:])):
        raise ValueError("the numbers that states stand for must increase")


def _count(count: int) -> int:
    if not 1 <= count < 2**63:
        raise ValueError("a discrete node has at least one state")
    return count
