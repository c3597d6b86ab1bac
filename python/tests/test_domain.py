"""Domains, nodes, evidence and results."""

import copy
import errno
import gc
import math
import pickle
import threading
from pathlib import Path

import pytest
from conftest import EXAMPLES

import quarn

approx = pytest.approx


def test_literature(clinic):
    """Lauritzen & Spiegelhalter 1988."""
    for evidence, node, state, expected in [
        ({}, "either", "yes", 0.064828),
        ({}, "dyspnoea", "yes", 0.435971),
        ({"asia": "yes", "xray": "yes"}, "tuberculosis", "yes", 0.33771),
        ({"asia": 0, "xray": "#0"}, "tuberculosis", "yes", 0.33771),
        ({"asia": (1, 0), "xray": [0.5, 0]}, "tuberculosis", "yes", 0.33771),
    ]:
        clinic.evidence = evidence
        assert clinic[node].beliefs[state] == approx(expected, abs=6e-5), evidence


def test_results_follow_every_change(clinic):
    tuberculosis = clinic["tuberculosis"]
    prior = tuberculosis.beliefs["yes"]
    clinic.evidence["asia"] = "yes"
    assert tuberculosis.beliefs["yes"] == approx(0.05)
    assert clinic.probability_of_evidence == approx(0.01)
    assert clinic.log_probability_of_evidence == approx(math.log(0.01))
    tuberculosis.table[0, 0] = tuberculosis.table[0, 1]
    assert tuberculosis.beliefs["yes"] == approx(0.5)
    del clinic.evidence["asia"]
    tuberculosis.table = [[0.05, 0.95], [0.01, 0.99]]
    assert tuberculosis.beliefs["yes"] == approx(prior)
    clinic.compile("total-weight")
    assert tuberculosis.beliefs["yes"] == approx(prior)
    tuberculosis.remove_parent("asia")
    assert tuberculosis.beliefs["yes"] == approx(0.05)


def test_equilibria_and_modes(clinic):
    clinic.evidence["dyspnoea"] = "yes"
    best = clinic.most_probable()
    assert best.probability == approx(0.201117, abs=1e-6)
    assert best.states["bronchitis"] == "yes" and best.states["cancer"] == "no"
    assert dict(clinic.evidence) == {"dyspnoea": "yes"}
    clinic.propagate(quarn.Equilibrium.MAX)
    assert max(clinic["bronchitis"].belief) == approx(1)
    assert clinic.probability_of_evidence == approx(0.435971, abs=1e-6)
    assert max(clinic["bronchitis"].belief) == approx(1)
    clinic.propagate(mode="fast_retraction")
    assert clinic["dyspnoea"].beliefs["yes"] == approx(0.435971, abs=1e-6)
    with pytest.raises(ValueError, match="sum"):
        clinic.propagate("best")


def test_most_probable_of_ties():
    """Either both or neither: the best states of the nodes do not go together in all ways."""
    with quarn.Domain() as domain:
        first = domain.add_chance("first", ["a", "b"])
        domain.add_chance("second", ["a", "b"], [first], [[0, 1], [1, 0]])
        domain.evidence["second"] = (0.5, 0.5)
        states, probability, _ = domain.most_probable()
        assert states["first"] != states["second"] and probability == approx(0.25)
        assert domain.evidence["second"] == (0.5, 0.5)


def test_evidence_is_a_mapping(clinic):
    evidence = clinic.evidence
    evidence.update(asia="yes", xray=(0.9, 0.2))
    evidence[clinic["smoking"]] = 1
    assert dict(clinic.evidence) == {"asia": "yes", "smoking": "no", "xray": (0.9, 0.2)}
    assert "xray" in evidence and "cancer" not in evidence and "nobody" not in evidence and len(evidence) == 3
    assert evidence.pop("asia") == "yes" and evidence.get("asia") is None
    evidence["xray"] = None
    for node, finding, error in [
        ("nobody", "yes", KeyError),
        ("asia", "maybe", ValueError),
        ("asia", "#2", ValueError),
        ("asia", -1, ValueError),
        ("asia", 0.5, ValueError),
        ("asia", True, TypeError),
        ("asia", (1, 2, 3), ValueError),
        ("asia", (0, 0), ValueError),
        ("asia", (-1, 2), ValueError),
        ("asia", (math.nan, 2), ValueError),
        ("asia", b"ye", TypeError),
        ("asia", {1, 0}, TypeError),
        ("asia", "y\0", ValueError),
    ]:
        with pytest.raises(error):
            evidence[node] = finding
        with pytest.raises(error):
            clinic.evidence = {"asia": "no", node: finding}
        assert dict(evidence) == {"smoking": "no"}, finding
    evidence.clear()
    with pytest.raises(KeyError):
        del evidence["smoking"]


def test_what_states_are_called():
    inf = math.inf
    with quarn.Domain() as domain:
        for name, states, names, accepted in [
            ("labels", ["a", "b"], ("a", "b"), ["b", 1, "#1"]),
            ("twins", ["x", "x", "y"], ("#0", "#1", "y"), ["#1", 1]),
            ("signs", ["#1", "x", "x"], ("#0", "#1", "#2"), ["#1", 1]),
            ("truth", bool, ("false", "true"), [True, "true", 1]),
            ("count", 2, ("#0", "#1"), ["#1", 1]),
            ("numbers", [1, 2.5], (1.0, 2.5), [2.5, "2.5", "#1"]),
        ]:
            node = domain.add_chance(name, states)
            assert node.states == names
            for state in accepted:
                assert node.index(state) == 1, (name, state)
        ages = domain.add_chance("ages", bounds=[-inf, 18, 65, inf])
        assert ages.states == ("#0", "#1", "#2") and ages.index(18) == ages.index("64.9") == 1
        assert ages.values[1:3] == (18, 65)
        unclear = domain.add_chance("unclear", ["1", "2", "3"])
        with pytest.raises(ValueError, match="'1' or"):
            unclear.index(1)
        ages.states = ["young", "old"]
        assert ages.states == ("young", "old") and ages.values == ()


def test_continuous_nodes_and_functions():
    with quarn.Domain() as domain:
        kind = domain.add_chance("kind", ["a", "b"], table=[0.25, 0.75])
        x = domain.add_continuous("x", [kind], mean=[0, 4], variance=1)
        y = domain.add_continuous("y", ["x", kind], 1, [1, 2], {"x": 2})
        domain.add_function("sum", "x + y", ["x", "y"])
        assert (x.mean, y.mean, domain["sum"].value) == (approx(3), approx(7), approx(10))
        assert x.variance == approx(1 + 16 * 0.1875)
        assert y.normal("b") == (1, 2, {"x": 2})
        domain.evidence["x"] = 4
        assert domain.evidence["x"] == 4 and (y.mean, x.variance) == (approx(9), 0)
        for error, action in [
            (TypeError, lambda: x.table),
            (TypeError, lambda: x.belief),
            (TypeError, lambda: kind.mean),
            (ValueError, lambda: y.normal()),
            (ValueError, lambda: x.set_normal(mean=[1, 2, 3])),
            (quarn.QuarnError, lambda: x.set_normal(variance=-1)),
            (TypeError, lambda: domain.evidence.update(sum=1)),
            (ValueError, lambda: domain.evidence.update(x=math.nan)),
            (ValueError, lambda: x.set_normal(coefficients={"y": 1})),
            (TypeError, lambda: setattr(kind, "table", None)),
        ]:
            with pytest.raises(error):
                action()


def test_a_function_without_a_value_costs_only_what_depends_on_it():
    with quarn.Domain() as domain:
        domain.add_chance("dice", [0, 1])
        domain.add_function("worse", "1 / dice", ["dice"], states=[1, 2])
        domain.add_chance("other", 2)
        domain.evidence["dice"] = 0
        assert domain["other"].belief[0] == approx(0.5)
        with pytest.raises(quarn.QuarnError) as caught:
            domain["worse"].belief
        assert caught.value.code == quarn.ErrorCode.DIVISION_BY_ZERO


def test_decisions(oil):
    assert oil.expected_utility == approx(5)
    policies = oil.solve()
    assert oil.expected_utility == approx(22.5)
    assert [node.name for node in oil["drill"].table_nodes] == ["test", "seismic"] + ["drill"]
    assert list(policies["drill"][0][0]) == [0, 1] and list(policies["drill"][0][2]) == [1, 0]
    oil.evidence["test"] = "no"
    assert list(oil.solve()) == ["drill"]
    assert oil.expected_utility == approx(20)
    assert list(oil["drill"].expected_utility) == approx([20, 0])
    assert oil["profit"].expected_utility == approx(20)
    with quarn.Domain() as domain:
        domain.add_chance("coin", 2)
        domain.add_chance("noise", 2)
        domain.add_decision("bet", 2, ["coin", "noise"])
        domain.add_utility("gain", ["coin", "bet"], [[1, 0], [0, 1]])
        assert domain.minimize() == 1 and domain["bet"].parents == [domain["coin"]]
        domain.solve()
        assert domain.expected_utility == approx(1)


def test_samples(clinic):
    first = clinic.sample(20, seed=1)
    assert not len(clinic.sample(0)) and [len(first), *clinic.sample(20, seed=1)["xray"]] == [20, *first["xray"]]
    clinic.evidence["xray"] = "yes"
    assert set(clinic.sample(20)["xray"]) == {"yes"}


def test_links_and_d_separation(clinic):
    def names(nodes):
        return [node.name for node in nodes]

    assert names(clinic["dyspnoea"].parents) == ["either", "bronchitis"]
    assert names(clinic["smoking"].children) == ["cancer", "bronchitis"]
    assert names(clinic.d_separated(["tuberculosis"], ["xray", "smoking"])) == ["smoking", "bronchitis", "xray"]
    with pytest.raises(quarn.QuarnError):
        clinic["asia"].add_parent("xray")
    del clinic["asia"]
    assert len(clinic) == 7 and "asia" not in clinic and names(clinic["tuberculosis"].parents) == []


def test_files(clinic, tmp_path):
    clinic.evidence.update(asia="no", xray=(0.5, 0.25))
    path = tmp_path / "net {"
    clinic.save(path)
    clinic.save_case(tmp_path / "case")
    with quarn.Domain.load(path) as again, quarn.Domain.parse("\n" + clinic.to_net()) as parsed:
        again.load_case(tmp_path / "case")
        assert dict(again.evidence) == dict(clinic.evidence) and parsed.to_net() == again.to_net()
        (tmp_path / "case").write_text('\nasia: "never"')
        with pytest.raises(quarn.ParseError, match="2: ") as caught:
            again.load_case(tmp_path / "case")
        assert caught.value.messages[0][0] == 2
    latin = b'node a { label = "\xe9"; states = ("x" "y"); }'
    path.write_bytes(latin)
    with quarn.Domain.load(path) as domain:
        assert quarn.Domain.parse(domain.to_net())["a"].label == domain["a"].label == "\udce9"


def test_errors(clinic, tmp_path):
    clinic.evidence.update(either="no", tuberculosis="yes")
    with pytest.raises(quarn.ImpossibleEvidence) as caught:
        clinic["xray"].belief
    assert caught.value.code == quarn.ErrorCode.INCONSISTENCY_OR_UNDERFLOW and caught.value.name
    with pytest.raises(quarn.ImpossibleEvidence):
        clinic["xray"].beliefs
    with pytest.raises(OSError, match="missing cannot be read: No such file") as io:
        quarn.Domain.load(tmp_path / "missing")
    assert io.value.errno == errno.ENOENT
    with pytest.raises(quarn.FileError, match="missing/net cannot be written"):
        clinic.save(tmp_path / "missing" / "net")
    with pytest.raises(quarn.ParseError) as parse:
        quarn.Domain.parse("node a {\n states = 1;\n}")
    assert "2: " in str(parse.value)
    with pytest.raises(quarn.ParseError):
        clinic.add_function("f", "1 +")
    with pytest.raises(MemoryError):
        clinic.add_chance("huge", 2**62, table=[1])
    with pytest.raises(ValueError):
        clinic.add_chance("wrong", 2, ["asia"], [[0.5, "x"]])
    assert len(clinic) == 8
    with pytest.raises(quarn.QuarnError, match="xray cannot become a parent of asia"):
        clinic["asia"].add_parent("xray")
    clinic["xray"].table = [0.5, 0.5, -1, 2]
    with pytest.raises(quarn.QuarnError, match="the table of node xray"):
        clinic["asia"].belief
    with pytest.warns(quarn.ParseWarning, match="<text>:1: "):
        quarn.Domain.parse('node a { states = ("x" "y"); } potential (a) { }')
    for error in (caught.value, io.value, parse.value, quarn.DeletedError("gone")):
        again = pickle.loads(pickle.dumps(error))
        assert (type(again), str(again), again.code) == (type(error), str(error), error.code)


def test_what_was_deleted_raises():
    domain = quarn.Domain.load(EXAMPLES / "chest_clinic.net")
    node, other = domain["asia"], domain["xray"]
    assert node is domain["asia"] and {node: 1}[domain["asia"]] == 1 and node != other
    node.delete()
    new = domain.add_chance("asia", 2)
    assert new is not node and new != node and node not in domain
    for action in (lambda: node.name, node.delete, lambda: domain.d_separated([node]), lambda: node.belief):
        with pytest.raises(quarn.DeletedError):
            action()
    with quarn.Domain() as stranger, pytest.raises(KeyError):
        stranger[other]
    evidence = domain.evidence
    domain.close()
    domain.close()
    for action in (lambda: other.belief, lambda: len(domain), lambda: "xray" in domain, evidence.clear):
        with pytest.raises(quarn.DeletedError):
            action()
    assert "closed" in repr(domain) and "deleted" in repr(node)


def test_nothing_is_copied(clinic):
    """A copy would share the memory, but not know what is out of date or deleted."""
    for original in (clinic, clinic["asia"]):
        for copied in (copy.copy, copy.deepcopy, pickle.dumps):
            with pytest.raises(TypeError, match="neither copied nor pickled"):
                copied(original)


def test_nodes_keep_their_domain():
    node = quarn.Domain.load(EXAMPLES / "chest_clinic.net")["xray"]
    gc.collect()
    assert node.beliefs["yes"] == approx(0.11029, abs=1e-5)


def test_garbage_does_not_hide_errors():
    """Domains in cycles are deleted whenever Python likes: between a call and the reading of its error code, too."""

    class Cycle:
        def __init__(self):
            self.domain, self.me = quarn.Domain(), self

    threshold = gc.get_threshold()
    gc.set_threshold(1)
    try:
        with quarn.Domain() as domain:
            node = domain.add_chance("node", 2)
            for _ in range(200):
                Cycle()
                with pytest.raises(quarn.QuarnError):
                    node.add_parent(node)
    finally:
        gc.set_threshold(*threshold)


def test_threads():
    failures = []
    shared = quarn.Domain.load(EXAMPLES / "chest_clinic.net")

    def ask():
        try:
            for _ in range(50):
                with quarn.Domain.load(EXAMPLES / "chest_clinic.net") as own:
                    own.evidence["asia"] = "yes"
                    assert own["tuberculosis"].beliefs["yes"] == approx(0.05)
                    with pytest.raises(quarn.QuarnError):
                        own["asia"].add_parent("asia")
                shared.evidence["xray"] = "yes"
                assert shared["xray"].beliefs["yes"] == 1
        except BaseException as failure:
            failures.append(failure)

    threads = [threading.Thread(target=ask) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures


def test_the_interface_is_whole():
    """Every enumeration of the header that users see has its members; every function is there."""
    from quarn._library import lib

    header = (Path(__file__).parents[2] / "include" / "quarn.h").read_text()
    declared = {word for word in header.replace("(", " ").split() if word.startswith("q_domain_get_")}
    assert declared and all(hasattr(lib, name) for name in declared)
    assert {int(member) for member in quarn.Category} == {5, 6, 7, 8, 9} and quarn.Kind.OTHER == -1
