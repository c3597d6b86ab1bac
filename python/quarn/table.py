"""Tables of nodes as arrays over the memory of the library.

Nobody tells when an array is written to. So what each table held when it was handed out is kept, and compared before
results are worked out. While an array is in use its table must keep its shape: changes of it raise BufferError.
"""

import math
import weakref
from typing import TYPE_CHECKING, Any, Iterable

from . import _numbers
from ._constants import Category, Kind
from ._library import call, ffi, lib, to_list

if TYPE_CHECKING:
    from ._numbers import Numbers
    from .node import Node


class LentTables:
    """The tables of a domain that were handed out as arrays."""

    def __init__(self) -> None:
        self._tables: "dict[Any, _LentTable]" = {}  # by the pointers of their nodes

    def view(self, node: "Node") -> "Numbers":
        """The table of a node as an array, for reading and writing."""
        table = call(lib.q_node_get_table, node._pointer)
        lent = self._tables.get(node._pointer)
        buffer = lent.buffer() if lent else None
        if buffer is None:
            if lent is not None and lent.has_changed():
                call(lib.q_node_touch_table, node._pointer)
                node.domain._stale = True
            size = call(lib.q_table_get_size, table)
            buffer = _hand_out(call(lib.q_table_get_data, table), size, node.domain._guard.owner)
            self._tables[node._pointer] = _LentTable(buffer)
        return _numbers.view(buffer, _shape(table))

    def touch_written(self) -> bool:
        """Tells the library which tables were written to; whether any was."""
        written = [node for node, table in self._tables.items() if table.has_changed()]
        for node in written:
            call(lib.q_node_touch_table, node)
        self.remember()
        return bool(written)

    def remember(self) -> None:
        """Takes what the tables hold now as known, and forgets those that are not in use any more."""
        self._tables = {node: table for node, table in self._tables.items() if table.buffer() is not None}
        for table in self._tables.values():
            table.remember()

    def require_unused(self, nodes: "Iterable[Node]") -> None:
        """Raises BufferError when the table of one of the nodes is in use as an array."""
        for node in nodes:
            table = self._tables.get(node._pointer)
            if table is not None and table.buffer() is not None:
                raise BufferError(f"the table of node {node.name} is in use as an array, so it must keep its shape")


class _LentTable:
    """What a table held when the library was last told of it."""

    def __init__(self, buffer: Any) -> None:
        self._lent = weakref.ref(buffer)
        # The memory stays until the table changes its shape, which no table does unnoticed: see LentTables.
        self._memory = ffi.buffer(ffi.cast("char*", ffi.from_buffer(buffer)), len(buffer))
        self._known: "bytes | None" = None
        self.remember()

    def buffer(self) -> Any:
        """What arrays are made over and hold; None when none is in use any more."""
        return self._lent()

    def remember(self) -> None:
        if self._known is None or self.has_changed():
            self._known = self._memory[:]

    def has_changed(self) -> bool:
        return bool(self._memory != self._known)


class _Keeper:
    """Keeps a domain, as the destructor of a pointer into its memory."""

    def __init__(self, owner: Any) -> None:
        self.owner = owner

    def __call__(self, _: Any) -> None:
        pass


def write(node: "Node", values: Any) -> None:
    """Writes numbers, which are looked at first, into the table of a node."""
    table = call(lib.q_node_get_table, node._pointer)
    memory = call(lib.q_table_get_data, table)
    numbers = _numbers.to_memory(values, _shape(table))
    ffi.memmove(memory, numbers, len(numbers))
    call(lib.q_node_touch_table, node._pointer)


def find_fault(nodes: "Iterable[Node]") -> "Node | None":
    """The first node whose table has a row that is no distribution, even after division by its sum."""
    for node in nodes:
        if node.kind == Kind.DISCRETE and node.category != Category.FUNCTION:
            table = call(lib.q_node_get_table, node._pointer)
            data, width = call(lib.q_table_get_data, table), len(node.states)
            for start in range(0, call(lib.q_table_get_size, table), width):
                row = ffi.unpack(data + start, width)
                if not min(row) >= 0 or not 0 < sum(row) < math.inf:
                    return node
    return None


def _hand_out(data: Any, size: int, owner: Any) -> Any:
    return ffi.buffer(ffi.gc(data, _Keeper(owner)), size * ffi.sizeof("double"))


def _shape(table: Any) -> "tuple[int, ...]":
    return tuple(call(lib.q_node_get_number_of_states, node) for node in discrete_nodes(table))


def discrete_nodes(table: Any) -> "list[Any]":
    """The handles of the discrete nodes of a table, one for each of its axes."""
    nodes = to_list(call(lib.q_table_get_nodes, table))
    return [node for node in nodes if lib.q_node_get_kind(node) == lib.q_kind_discrete]
