"""A domain: a network with its evidence and its results."""

import os
import tempfile
import weakref
from contextlib import contextmanager
from typing import TYPE_CHECKING, Any, Callable, Iterable, Iterator, Mapping, NoReturn, Sequence

from ._constants import Category, Equilibrium, ErrorCode, Kind, Mode, Triangulation
from ._library import call, ffi, lib, own_domain, text_lock, to_bytes, to_list, to_text
from ._parsing import read
from .batch import batch
from .configuration import Configuration, most_probable
from .decisions import solve
from .display import domain_html, domain_svg
from .errors import DeletedError, FileError, QuarnError
from .evidence import Evidence
from .guard import Guard
from .node import Node, NodeOrName
from .sampling import sample
from .states import set_bounds, set_states
from .table import LentTables, find_fault

if TYPE_CHECKING:
    from ._numbers import Numbers

# A function without a value costs only what depends on it.
_OF_FUNCTIONS = (
    ErrorCode.COMPUTATION_FAILED,
    ErrorCode.DIVISION_BY_ZERO,
    ErrorCode.INAPPROPRIATE_ARGUMENTS,
    ErrorCode.INVALID_STATE_VALUES,
    ErrorCode.NO_EQUILIBRIUM,
)


class Domain:
    """A network of nodes, with evidence and results.

    Results are those for the present evidence, tables and links: what asks for them compiles and propagates first when
    something has changed. Call propagate() yourself to choose when that is done, or in which way.

    A domain can be used by several threads, one of which at a time gets on; different domains are independent.

    >>> import quarn
    >>> with quarn.Domain.load("examples/chest_clinic.net") as domain:
    ...     domain.evidence["xray"] = "yes"
    ...     round(domain["tuberculosis"].beliefs["yes"], 4)
    0.0924
    """

    def __init__(self) -> None:
        self._adopt(call(lib.q_domain_new))

    def _adopt(self, pointer: Any) -> None:
        self._guard = Guard(own_domain(pointer))
        self._known_nodes: "weakref.WeakValueDictionary[Any, Node]" = weakref.WeakValueDictionary()
        self._lent = LentTables()
        self._stale = True
        self._wanted = (Equilibrium.SUM, Mode.NORMAL)
        self._failure: "QuarnError | None" = None

    # Reading and writing ---------------------------------------------------------------------------------------

    @classmethod
    def load(cls, path: "str | os.PathLike[str]") -> "Domain":
        """Reads a network from a file in the NET language. Faults raise ParseError, warnings are ParseWarnings."""
        return cls._read(_path(path), os.fspath(path))

    @classmethod
    def parse(cls, text: str) -> "Domain":
        """Reads a network from a text in the NET language.

        >>> import quarn
        >>> quarn.Domain.parse('node rain { states = ("no" "yes"); }').nodes
        [<Node rain>]
        """
        if not isinstance(text, str):
            raise TypeError(f"a text is needed, not {type(text).__name__}")
        # A text by itself could be taken for the name of a file, and faults would have no line numbers.
        with tempfile.TemporaryFile() as file:
            file.write(text.encode("utf-8", "surrogateescape"))
            file.flush()
            return cls._read(f"/dev/fd/{file.fileno()}".encode(), "<text>")

    @classmethod
    def _read(cls, path: bytes, source: str) -> "Domain":
        domain = cls.__new__(cls)
        domain._adopt(read(source, lib.q_net_parse_domain, path))
        return domain

    def save(self, path: "str | os.PathLike[str]") -> None:
        """Writes the network to a file in the NET language; evidence is not written."""
        self._write(lib.q_domain_save_as_net, path)

    def _write(self, function: Callable[..., Any], path: "str | os.PathLike[str]") -> None:
        with self._guard, text_lock:
            try:
                self._call(function, _path(path))
            except FileError as error:
                raise error.about(f"{os.fspath(path)} cannot be written") from None

    def to_net(self) -> str:
        """What save() writes."""
        with self._guard, text_lock:
            text = self._call(lib.q_domain_to_net)
        try:
            return to_text(text)
        finally:
            lib.q_string_delete(text)

    def save_case(self, path: "str | os.PathLike[str]") -> None:
        """Writes the evidence to a case file."""
        self._write(lib.q_domain_save_case, path)

    def load_case(self, path: "str | os.PathLike[str]") -> None:
        """Replaces the evidence by that in a case file. There is none afterwards when the file cannot be read."""
        with self._changing():
            read(os.fspath(path), lib.q_domain_parse_case, self._guard.owner, _path(path))

    # Life ------------------------------------------------------------------------------------------------------

    def close(self) -> None:
        """Gives the memory back; using the domain or its nodes raises DeletedError from then on.

        Arrays that Node.table gave stay good, and keep the memory as long. Without close() it is given back when nothing
        refers to the domain any more.
        """
        self._guard.close()

    def __enter__(self) -> "Domain":
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __reduce__(self) -> NoReturn:
        raise TypeError("a domain can be neither copied nor pickled: write it with save() or to_net(), and read that")

    def __repr__(self) -> str:
        if self._guard.owner is None:
            return "<Domain, closed>"
        return f"<Domain of {len(self)} nodes>"

    @contextmanager
    def _changing(self, reshaped: "Iterable[Node]" = ()) -> "Iterator[None]":
        """Around a change, after which results are out of date; the tables of the given nodes may change their shape."""
        with self._guard:
            self._lent.require_unused(reshaped)
            self._lent.touch_written()
            self._stale = True
            yield

    def _call(self, function: Callable[..., Any], *arguments: Any) -> Any:
        with self._guard:
            return call(function, self._guard.owner, *arguments)

    # Nodes -----------------------------------------------------------------------------------------------------

    @property
    def nodes(self) -> "list[Node]":
        """All nodes, in the order in which they were made."""
        with self._guard:
            pointers = []
            pointer = self._call(lib.q_domain_get_first_node)
            while pointer:
                pointers.append(pointer)
                pointer = call(lib.q_node_get_next, pointer)
            return self._nodes_of(reversed(pointers))

    def __getitem__(self, node: NodeOrName) -> Node:
        with self._guard:
            if isinstance(node, Node):
                if node._domain is not self:
                    raise KeyError(f"node {node.name} is in another domain")
                node._live_pointer()
                return node
            pointer = self._call(lib.q_domain_get_node_by_name, to_bytes(node))
            if not pointer:
                raise KeyError(f"there is no node {node!r}")
            return self._nodes_of([pointer])[0]

    def __contains__(self, node: object) -> bool:
        with self._guard:
            try:
                self[node]  # type: ignore[index]
            except (KeyError, TypeError, ValueError, DeletedError):
                return False
            return True

    def __iter__(self) -> "Iterator[str]":
        return iter([node.name for node in self.nodes])

    def __len__(self) -> int:
        return len(self.nodes)

    def __delitem__(self, node: NodeOrName) -> None:
        self[node].delete()

    def _nodes_of(self, pointers: "Iterable[Any]") -> "list[Node]":
        nodes = []
        for pointer in pointers:
            node = self._known_nodes.get(pointer)
            if node is None:
                node = self._known_nodes[pointer] = Node(self, pointer)
            nodes.append(node)
        return nodes

    def _of_category(self, category: Category) -> "list[Node]":
        return [node for node in self.nodes if node.category == category]

    def _pointer_of(self, node: NodeOrName) -> Any:
        return self[node]._pointer

    # Building --------------------------------------------------------------------------------------------------

    def add_chance(
        self,
        name: str,
        states: Any = None,
        parents: "Sequence[NodeOrName]" = (),
        table: Any = None,
        *,
        bounds: "Iterable[float] | None" = None,
        label: str = "",
    ) -> Node:
        """Adds a discrete chance node.

        states   a list of labels; a list of increasing numbers; bool, for "false" and "true"; or how many there are
        bounds   instead of states: increasing numbers, each two of which bound a state; the outer ones may be infinite
        parents  nodes or names
        table    probabilities of the states: a row for each configuration of the parents, the last of which varies fastest

        >>> import quarn
        >>> domain = quarn.Domain()
        >>> rain = domain.add_chance("rain", ["no", "yes"], table=[0.8, 0.2])
        >>> grass = domain.add_chance("grass", ["dry", "wet"], [rain], [[0.9, 0.1], [0.05, 0.95]])
        >>> domain.evidence["grass"] = "wet"
        >>> round(rain.beliefs["yes"], 6)
        0.703704
        """
        return self._add(Category.CHANCE, Kind.DISCRETE, name, label, parents, states, bounds, table)

    def add_decision(
        self,
        name: str,
        states: Any,
        parents: "Sequence[NodeOrName]" = (),
        table: Any = None,
        *,
        label: str = "",
    ) -> Node:
        """Adds a decision; its parents are what is known when it is made, its table is the policy."""
        return self._add(Category.DECISION, Kind.DISCRETE, name, label, parents, states, None, table)

    def add_utility(
        self, name: str, parents: "Sequence[NodeOrName]" = (), table: Any = None, *, label: str = ""
    ) -> Node:
        """Adds a utility; its table has a number for each configuration of its parents."""
        return self._add(Category.UTILITY, Kind.OTHER, name, label, parents, None, None, table)

    def add_continuous(
        self,
        name: str,
        parents: "Sequence[NodeOrName]" = (),
        mean: Any = None,
        variance: Any = None,
        coefficients: "Mapping[str, Any] | None" = None,
        *,
        label: str = "",
    ) -> Node:
        """Adds a continuous node, normally distributed given its parents: see Node.set_normal(). Standard normal at first."""
        node = self._add(Category.CHANCE, Kind.CONTINUOUS, name, label, parents)
        with self._deleting_on_failure(node):
            node.set_normal(mean, variance, coefficients)
        return node

    def add_function(
        self,
        name: str,
        expression: str,
        parents: "Sequence[NodeOrName]" = (),
        states: Any = None,
        *,
        label: str = "",
    ) -> Node:
        """Adds a function, computed by an expression over its parents: real-valued, or with states.

        >>> import quarn
        >>> domain = quarn.Domain()
        >>> dice = domain.add_chance("dice", range(1, 7))
        >>> domain.add_function("twice", "2 * dice", [dice]).value
        7.0
        """
        kind = Kind.OTHER if states is None else Kind.DISCRETE
        node = self._add(Category.FUNCTION, kind, name, label, parents, states)
        with self._deleting_on_failure(node):
            text = to_bytes(expression)
            parsed = read(f"function {name}", lib.q_domain_parse_expression, self._guard.owner, text)
            try:
                model = node._call(lib.q_node_new_model, ffi.new("q_node_t[1]"))
                call(lib.q_model_set_expression, model, 0, parsed)
            except BaseException:
                lib.q_expression_delete(parsed)
                raise
        return node

    def _add(
        self,
        category: Category,
        kind: Kind,
        name: str,
        label: str,
        parents: "Sequence[NodeOrName]",
        states: Any = None,
        bounds: "Iterable[float] | None" = None,
        table: Any = None,
    ) -> Node:
        if isinstance(parents, (str, Node)):
            raise TypeError("parents must be a list")
        with self._changing():
            linked = [self[parent] for parent in parents]
            [node] = self._nodes_of([self._call(lib.q_domain_new_node, category, kind)])
            with self._deleting_on_failure(node):
                node.name = name
                node.label = label
                if states is not None:
                    set_states(node._pointer, states)
                elif bounds is not None:
                    set_bounds(node._pointer, bounds)
                elif kind == Kind.DISCRETE:
                    raise TypeError("a discrete node needs states")
                for parent in linked:
                    node.add_parent(parent)
                if table is not None:
                    node.table = table
            return node

    @contextmanager
    def _deleting_on_failure(self, node: Node) -> "Iterator[None]":
        with self._changing():
            try:
                yield
            except BaseException:
                node.delete()
                raise

    # Evidence and results --------------------------------------------------------------------------------------

    @property
    def evidence(self) -> Evidence:
        """What is known of nodes, as a mapping: see Evidence. Can be set: domain.evidence = {"xray": "yes"}."""
        return Evidence(self)

    @evidence.setter
    def evidence(self, findings: "Mapping[Any, Any]") -> None:
        Evidence(self).replace(findings)

    def compile(self, method: "str | Triangulation | None" = None) -> None:
        """Compiles the domain anew. Results do so by themselves: this is to choose how.

        method  what each elimination keeps small: "clique_size", "clique_weight", "fill_in_size", "fill_in_weight",
                "best_greedy" (the default: the best of these) or "total_weight" (a search, which takes longer)
        """
        chosen = _member(Triangulation, method or "best_greedy")
        with self._changing():
            if not any(node.kind in (Kind.DISCRETE, Kind.CONTINUOUS) for node in self.nodes):
                raise ValueError("the domain has no discrete or continuous nodes")
            self._call(lib.q_domain_uncompile)
            self._call(lib.q_domain_triangulate, chosen)
            self._call(lib.q_domain_compile)

    def propagate(self, equilibrium: "str | Equilibrium" = "sum", mode: "str | Mode" = "normal") -> None:
        """Brings results in line with tables and evidence, and says what later results are.

        equilibrium  "sum": beliefs; "max": probabilities of the most probable configuration with each state
        mode         "normal"; "fast_retraction": the belief of a node is that given the evidence on all others
        """
        with self._guard:
            wanted = (_member(Equilibrium, equilibrium), _member(Mode, mode))
            self._propagate(*wanted)
            self._wanted = wanted

    def _propagate(self, equilibrium: Equilibrium, mode: Mode) -> None:
        self._lent.touch_written()
        self._stale, self._failure = True, None
        if not self._call(lib.q_domain_is_compiled):
            self.compile()
        if (equilibrium, mode) != (Equilibrium.SUM, Mode.NORMAL):
            self._require_discrete_chance()
        try:
            self._call(lib.q_domain_propagate, equilibrium, mode)
        except QuarnError as error:
            fault = find_fault(self.nodes) if error.code == ErrorCode.INVALID_PROBABILITY_POTENTIAL else None
            if fault is None:
                raise
            raise error.about(f"the table of node {fault.name}") from None
        finally:
            self._lent.remember()  # distributions were divided by their sums
        self._stale = False

    def _require_discrete_chance(self) -> None:
        for node in self.nodes:
            if node.category != Category.CHANCE or node.kind != Kind.DISCRETE:
                raise ValueError(f"this is for domains of discrete chance nodes, unlike {node.name}")

    @contextmanager
    def _results(self, wanted: "tuple[Equilibrium, Mode] | None" = None) -> "Iterator[None]":
        """Around reading results, which are up to date then."""
        with self._guard:
            if self._lent.touch_written() or self._stale or wanted not in (None, self._wanted):
                try:
                    self._propagate(*(wanted or self._wanted))
                except QuarnError as error:
                    if error.code not in _OF_FUNCTIONS:
                        raise
                    self._stale, self._failure = False, error
            try:
                yield
            except QuarnError as error:
                if error.code == ErrorCode.NO_EQUILIBRIUM and self._failure is not None:
                    raise self._failure from None
                raise
            finally:
                self._stale = self._stale or wanted not in (None, self._wanted)

    @property
    def probability_of_evidence(self) -> float:
        """The probability of the evidence; with likelihoods the expectation of the product of their weights, with values of
        continuous nodes the density. 0 when it is too small for a float: the logarithm is right there too."""
        with self._results((Equilibrium.SUM, Mode.NORMAL)):
            return float(self._call(lib.q_domain_get_normalization_constant))

    @property
    def log_probability_of_evidence(self) -> float:
        """The natural logarithm of the probability of the evidence."""
        with self._results((Equilibrium.SUM, Mode.NORMAL)):
            return float(self._call(lib.q_domain_get_log_normalization_constant))

    @property
    def expected_utility(self) -> float:
        """What is expected of all utilities together, under the policies of the decisions."""
        with self._results():
            return float(self._call(lib.q_domain_get_expected_utility))

    def most_probable(self) -> Configuration:
        """A most probable configuration of all nodes given the evidence, in a domain of discrete chance nodes.

        >>> import quarn
        >>> domain = quarn.Domain.load("examples/chest_clinic.net")
        >>> domain.evidence["dyspnoea"] = "yes"
        >>> domain.most_probable().states["bronchitis"]
        'yes'
        """
        return most_probable(self)

    def solve(self, start: str = "uniform") -> "dict[str, Numbers]":
        """Finds policies for the open decisions by single policy updating, and makes them the tables of the decisions.

        start   what is begun with: "uniform", all states alike; or "tables", the present policies
        result  the new tables by the names of the decisions; expected_utility is what they are expected to bring

        >>> import quarn
        >>> domain = quarn.Domain.load("examples/oil_wildcatter.net")
        >>> policies = domain.solve()
        >>> domain.expected_utility
        22.5
        """
        return solve(self, start)

    def minimize(self) -> int:
        """Removes the links into decisions that the network shows no best policy to need; how many there were."""
        with self._guard, self._changing(self._of_category(Category.DECISION)):
            return int(self._call(lib.q_domain_minimize_limid))

    def sample(self, n: int, seed: "int | None" = None) -> Any:
        """Cases at random given the evidence: a DataFrame with a column for each node; without pandas a list of dicts.

        seed  the same seed gives the same cases, though others once something was computed: they are drawn from that then;
              None goes on where the domain's random numbers are, which begin the same in each domain
        """
        return sample(self, n, seed)

    def batch(
        self,
        rows: Any,
        targets: "Sequence[NodeOrName] | NodeOrName | None" = None,
        keep: "Sequence[str] | str | None" = None,
    ) -> Any:
        """Results for many rows of evidence, worked out one after the other: see the module quarn.batch."""
        return batch(self, rows, targets, keep)

    def d_separated(
        self,
        sources: "Iterable[NodeOrName]",
        given: "Iterable[NodeOrName]" = (),
        soft: "Iterable[NodeOrName]" = (),
    ) -> "list[Node]":
        """The nodes that, by the links alone, say nothing of the sources when others are given.

        given   nodes whose states are known
        soft    nodes with likelihoods

        >>> import quarn
        >>> domain = quarn.Domain.load("examples/chest_clinic.net")
        >>> domain.d_separated(["asia"], given=["tuberculosis"])[:2]
        [<Node smoking>, <Node tuberculosis>]
        """
        with self._guard:
            lists = [self._handles(nodes) for nodes in (sources, given, soft)]
            return self._nodes_of(to_list(self._call(lib.q_domain_get_d_separated_nodes, *lists)))

    def _handles(self, nodes: "Iterable[NodeOrName]") -> Any:
        if isinstance(nodes, (str, Node)):
            nodes = [nodes]
        return ffi.new("q_node_t[]", [self._pointer_of(node) for node in nodes] + [ffi.NULL])

    # Threads and notebooks -------------------------------------------------------------------------------------

    @property
    def threads(self) -> int:
        """How many threads an operation on tables may use; 1 at first. Can be set; results do not depend on it."""
        return int(self._call(lib.q_domain_get_concurrency_level))

    @threads.setter
    def threads(self, count: int) -> None:
        if count < 1:
            raise ValueError("there is at least one thread")
        self._call(lib.q_domain_set_concurrency_level, count)

    def _repr_svg_(self) -> "str | None":
        return domain_svg(self)

    def _repr_html_(self) -> "str | None":
        try:
            return domain_html(self)
        except DeletedError:
            return None


def _path(path: "str | os.PathLike[str]") -> bytes:
    # Nothing that begins with a slash is taken for a text.
    return os.fsencode(os.path.abspath(os.fspath(path)))


def _member(enumeration: Any, name: Any) -> Any:
    if isinstance(name, enumeration):
        return name
    try:
        return enumeration[str(name).upper().replace("-", "_")]
    except KeyError:
        names = ", ".join(member.name.lower() for member in enumeration)
        raise ValueError(f"{name!r} is none of {names}") from None
