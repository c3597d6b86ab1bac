"""A node of a domain."""

from typing import TYPE_CHECKING, Any, Callable, Mapping, NamedTuple, NoReturn, Union

from . import _numbers
from ._constants import Category, Kind, Subtype
from ._library import call, ffi, lib, number, to_bytes, to_list, to_text
from .display import node_html
from .errors import DeletedError, QuarnError
from .states import State, find_state, name_states, set_states
from .table import discrete_nodes, write

if TYPE_CHECKING:
    from ._numbers import Numbers
    from .domain import Domain

NodeOrName = Union["Node", str]


class Normal(NamedTuple):
    """How a continuous node is distributed in one configuration of its discrete parents."""

    mean: float
    """The mean where all continuous parents are 0."""
    variance: float
    coefficients: "dict[str, float]"
    """What the mean grows by for each unit of a continuous parent, by the name of the parent."""


class Node:
    """A node of a domain: ``domain["name"]``.

    There is one object for each node, so nodes can be compared with ``is`` and ``==``. It keeps the domain alive.
    """

    def __init__(self, domain: "Domain", pointer: Any) -> None:
        self._domain = domain
        self._pointer = pointer

    def __reduce__(self) -> NoReturn:
        raise TypeError("a node can be neither copied nor pickled: take its name")

    def __repr__(self) -> str:
        try:
            return f"<Node {self.name}>"
        except DeletedError:
            return "<Node, deleted>"

    def _call(self, function: Callable[..., Any], *arguments: Any) -> Any:
        with self._domain._guard:
            return call(function, self._live_pointer(), *arguments)

    def _live_pointer(self) -> Any:
        if not self._pointer:
            raise DeletedError("the node was deleted")
        return self._pointer

    @property
    def domain(self) -> "Domain":
        """The domain that the node is in."""
        return self._domain

    @property
    def name(self) -> str:
        """Its name, by which the domain finds it. Can be set: a C identifier, or several joined by dots."""
        with self._domain._guard:
            return to_text(self._call(lib.q_node_get_name))

    @name.setter
    def name(self, name: str) -> None:
        self._call(lib.q_node_set_name, to_bytes(name))

    @property
    def label(self) -> str:
        """A text for people. Can be set."""
        with self._domain._guard:
            return to_text(self._call(lib.q_node_get_label))

    @label.setter
    def label(self, label: str) -> None:
        self._call(lib.q_node_set_label, to_bytes(label))

    @property
    def position(self) -> "tuple[int, int]":
        """Where front ends draw it. Can be set."""
        places = ffi.new("int32_t[2]")
        self._call(lib.q_node_get_position, places, places + 1)
        return places[0], places[1]

    @position.setter
    def position(self, position: "tuple[int, int]") -> None:
        self._call(lib.q_node_set_position, *position)

    @property
    def category(self) -> Category:
        """What it is for: chance, decision, utility or function."""
        return Category(self._call(lib.q_node_get_category))

    @property
    def kind(self) -> Kind:
        """What values it takes: one of its states, a real number, or neither."""
        return Kind(self._call(lib.q_node_get_kind))

    @property
    def subtype(self) -> Subtype:
        """How the states of a discrete node are meant."""
        self._require_states()
        return Subtype(self._call(lib.q_node_get_subtype))

    # States, parents and children ------------------------------------------------------------------------------

    @property
    def states(self) -> "tuple[State, ...]":
        """What the states of a discrete node are called in evidence and results; () for other nodes.

        That is the label of a state, if no other has the same; else the value of a state that stands for a number;
        else "#" and its number: "#0". Can be set, in the same ways as in Domain.add_chance().
        """
        with self._domain._guard:
            return name_states(self._live_pointer()) if self.kind == Kind.DISCRETE else ()

    @states.setter
    def states(self, states: Any) -> None:
        with self._domain._guard, self._domain._changing([self, *self.children]):
            self._require_states()
            set_states(self._pointer, states)

    @property
    def values(self) -> "tuple[float, ...]":
        """What the states of a numbered node stand for, or the bounds of an interval node; () where none are set."""
        with self._domain._guard:
            if self.kind != Kind.DISCRETE or self.subtype not in (Subtype.NUMBER, Subtype.INTERVAL):
                return ()
            count = self._call(lib.q_node_get_number_of_states) + (self.subtype == Subtype.INTERVAL)
            try:
                return tuple(self._call(lib.q_node_get_state_value, index) for index in range(count))
            except QuarnError:
                return ()

    @property
    def parents(self) -> "list[Node]":
        """Its parents, in the order in which they were added."""
        with self._domain._guard:
            return self._domain._nodes_of(to_list(self._call(lib.q_node_get_parents)))

    @property
    def children(self) -> "list[Node]":
        """Its children, in the order in which they were added."""
        with self._domain._guard:
            return self._domain._nodes_of(to_list(self._call(lib.q_node_get_children)))

    def add_parent(self, parent: NodeOrName) -> None:
        """Adds a link. A table that the node has is repeated for each state of a discrete parent, its first axis then."""
        with self._domain._changing([self]):
            child, linked = self._live_pointer(), self._domain[parent]
            try:
                call(lib.q_node_add_parent, child, linked._pointer)
            except QuarnError as error:
                raise error.about(f"node {linked.name} cannot become a parent of {self.name}") from None

    def remove_parent(self, parent: NodeOrName) -> None:
        """Removes a link. The table keeps what it holds for the first state of the parent."""
        with self._domain._changing([self]):
            self._call(lib.q_node_remove_parent, self._domain._pointer_of(parent))

    def delete(self) -> None:
        """Deletes the node with its links. The tables of its children keep what they hold for its first state."""
        with self._domain._guard, self._domain._changing([self, *self.children]):
            self._call(lib.q_node_delete)
            self._domain._known_nodes.pop(self._pointer, None)
            self._pointer = ffi.NULL

    # Tables ----------------------------------------------------------------------------------------------------

    @property
    def table(self) -> "Numbers":
        """Its table: an array with an axis for each of table_nodes. Not for continuous nodes: see normal().

        Of a chance node it holds the probabilities of its states, of a decision its policy, of a utility utilities. It is
        no copy: what is written into it counts from the next result on, when rows are also divided by their sums. As long
        as it is in use the domain stays in memory, even closed, and changes of its shape raise BufferError. Setting it
        writes into it all that is given, in the same shape or as a flat list (with numpy, what can be broadcast to it).

        >>> import quarn
        >>> with quarn.Domain() as domain:
        ...     rain = domain.add_chance("rain", ["no", "yes"], table=[0.8, 0.2])
        ...     rain.table[1] = 0.6
        ...     rain.beliefs["yes"]
        0.4285714285714286
        """
        with self._domain._guard:
            self._require_table()
            return self._domain._lent.view(self)

    @table.setter
    def table(self, values: Any) -> None:
        if values is None:
            raise TypeError("a table needs numbers")
        with self._domain._changing():
            self._require_table()
            write(self, values)

    def _require_table(self) -> None:
        if self.kind == Kind.CONTINUOUS:
            raise TypeError(f"node {self.name} is continuous: see normal() and set_normal()")
        if self.category == Category.FUNCTION and self.kind == Kind.OTHER:
            raise TypeError(f"node {self.name} is a real-valued function, which has no table")

    @property
    def table_nodes(self) -> "list[Node]":
        """The discrete nodes that its table is over, one for each axis."""
        with self._domain._guard:
            return self._domain._nodes_of(discrete_nodes(self._call(lib.q_node_get_table)))

    def normal(self, *states: Any) -> Normal:
        """How a continuous node is distributed given states of its discrete parents, in the order of table_nodes.

        >>> import quarn
        >>> domain = quarn.Domain.load("examples/waste_incinerator.net")
        >>> domain["metals_in_waste"].normal("industrial")
        Normal(mean=0.5, variance=0.01, coefficients={})
        """
        with self._domain._guard:
            nodes = self.table_nodes
            if len(states) != len(nodes):
                raise ValueError(f"a state is needed for each of {[node.name for node in nodes]}")
            row = 0
            for node, state in zip(nodes, states):
                row = row * len(node.states) + node.index(state)
            coefficients = {
                parent.name: self._call(lib.q_node_get_cg_coefficient, parent._pointer, row)
                for parent in self.parents
                if parent.kind == Kind.CONTINUOUS
            }
            mean = self._call(lib.q_node_get_cg_intercept, row)
            return Normal(mean, self._call(lib.q_node_get_cg_variance, row), coefficients)

    def set_normal(
        self, mean: Any = None, variance: Any = None, coefficients: "Mapping[str, Any] | None" = None
    ) -> None:
        """Says how a continuous node is distributed; what is None stays.

        Each is one number, or an array with a number for each configuration of table_nodes.
        """
        with self._domain._changing():
            parents = self.parents
            for name in coefficients or {}:
                if self._domain[name] not in parents or self._domain[name].kind != Kind.CONTINUOUS:
                    raise ValueError(f"{name!r} is no continuous parent of node {self.name}")
            shape = tuple(len(node.states) for node in self.table_nodes)
            settings: "list[tuple[Any, tuple[Any, ...], list[float]]]" = [
                (lib.q_node_set_cg_coefficient, (self._domain._pointer_of(parent),), _numbers.spread(numbers, shape))
                for parent, numbers in (coefficients or {}).items()
            ]
            for function, numbers in (
                (lib.q_node_set_cg_intercept, mean),
                (lib.q_node_set_cg_variance, variance),
            ):
                if numbers is not None:
                    settings.append((function, (), _numbers.spread(numbers, shape)))
            for function, parent, numbers in settings:
                for row, number in enumerate(numbers):
                    self._call(function, *parent, row, number)

    # Results ---------------------------------------------------------------------------------------------------

    def index(self, state: Any) -> int:
        """The number of a state of a discrete node, from what selects it as evidence."""
        with self._domain._guard:
            self._require_states()
            return find_state(self._pointer, state)

    @property
    def belief(self) -> "Numbers":
        """The probability of each state of a discrete node given the evidence: an array; a list without numpy.

        Propagates first if something has changed.
        """
        with self._domain._results():
            return _numbers.vector(self._beliefs())

    @property
    def beliefs(self) -> "dict[State, float]":
        """The same by state.

        >>> import quarn
        >>> with quarn.Domain() as domain:
        ...     domain.add_chance("rain", ["no", "yes"], table=[3, 1]).beliefs
        {'no': 0.75, 'yes': 0.25}
        """
        with self._domain._results():
            return dict(zip(self.states, self._beliefs()))

    def _require_states(self) -> None:
        if self.kind != Kind.DISCRETE:
            raise TypeError(f"node {self.name} has no states")

    def _beliefs(self) -> "list[float]":
        self._require_states()
        count = self._call(lib.q_node_get_number_of_states)
        return [number(lib.q_node_get_belief, self._pointer, state) for state in range(count)]

    @property
    def mean(self) -> float:
        """The mean of a continuous node, or of one whose states stand for numbers, given the evidence."""
        return self._moment(lib.q_node_get_mean, lib.q_node_get_numeric_mean)

    @property
    def variance(self) -> float:
        """The variance of a continuous node, of one whose states stand for numbers, or of a utility."""
        if self.category == Category.UTILITY:
            with self._domain._results():
                return float(self._call(lib.q_node_get_utility_variance))
        return self._moment(lib.q_node_get_variance, lib.q_node_get_numeric_variance)

    def _moment(self, of_continuous: Any, of_numbered: Any) -> float:
        with self._domain._results():
            if self.kind == Kind.CONTINUOUS:
                return float(self._call(of_continuous))
            if not self.values:
                raise TypeError(f"node {self.name} is neither continuous nor do its states stand for numbers")
            return float(self._call(of_numbered))

    @property
    def value(self) -> float:
        """The value of a real-valued function."""
        if self.category != Category.FUNCTION or self.kind != Kind.OTHER:
            raise TypeError(f"node {self.name} is no real-valued function")
        with self._domain._results():
            return float(self._call(lib.q_node_get_value))

    @property
    def expected_utility(self) -> "float | Numbers":
        """What is expected of a utility; of a discrete node, of the utilities connected with it in each of its states."""
        with self._domain._results():
            if self.kind != Kind.DISCRETE:
                return float(self._call(lib.q_node_get_expected_utility, 0))
            count = self._call(lib.q_node_get_number_of_states)
            return _numbers.vector([self._call(lib.q_node_get_expected_utility, state) for state in range(count)])

    def _repr_html_(self) -> "str | None":
        try:
            return node_html(self)
        except DeletedError:
            return None
