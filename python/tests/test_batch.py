"""Many rows of evidence at once: the same as one after the other."""

import math

import pytest

import quarn

pandas = pytest.importorskip("pandas")


def test_rows_are_as_by_themselves(clinic):
    rows = [
        {"asia": "yes", "xray": "no", "id": 1},
        {"asia": None, "xray": "yes", "id": 2},
        {"asia": "", "xray": (0.9, 0.2), "id": 3},
        {"asia": float("nan"), "xray": "sometimes", "id": 4},
        {"asia": "no", "xray": "yes", "id": 5},
    ]
    clinic.evidence = {"smoking": "yes", "asia": "no"}
    frame = pandas.DataFrame(rows, index=list("abcde"))
    results = clinic.batch(frame, targets=["cancer", clinic["xray"]], keep=["id"])
    assert list(results.columns) == "id cancer=yes cancer=no xray=yes xray=no log_p error".split()
    assert list(results.index) == list("abcde") and list(results["id"]) == [1, 2, 3, 4, 5]
    assert dict(clinic.evidence) == {"asia": "no", "smoking": "yes"}
    assert "sometimes" in results.loc["d", "error"] and math.isnan(results.loc["d", "log_p"])
    for row, name in zip(rows, "abcde"):
        if name == "d":
            continue
        clinic.evidence = {"smoking": "yes"}
        clinic.evidence.update({node: row[node] or None for node in ("asia", "xray")})
        assert results.loc[name, "cancer=yes"] == pytest.approx(clinic["cancer"].beliefs["yes"], rel=1e-12)
        assert results.loc[name, "log_p"] == pytest.approx(clinic.log_probability_of_evidence, rel=1e-12)
        assert results.loc[name, "error"] is None
    for columns, arguments in [({"who": [1]}, {}), ({"asia": ["yes"]}, {"keep": ["id"]}), ({}, {"targets": ["x"]})]:
        with pytest.raises(KeyError):
            clinic.batch(pandas.DataFrame(columns), **arguments)


def test_what_columns_are_for(clinic, oil):
    truth = clinic.batch([{"cancer": "yes", "asia": 10**400}, {"cancer": "no"}], ["cancer"] * 2, "cancer")
    assert list(truth["cancer"]) == ["yes", "no"] and truth["error"][0]
    assert truth["cancer=yes"][1] == pytest.approx(0.055)
    with pytest.warns(UserWarning, match="profit is not used"):
        assert not any(oil.batch(oil.sample(5))["error"])
    with quarn.Domain() as domain:
        domain.add_chance("near", [1, 1 + 1e-11])
        assert len(domain.batch([{}]).columns) == len(set(domain.batch([{}]).columns))
    for wrong in ({"asia": ["yes"]}, "yes", [["yes"]]):
        with pytest.raises(TypeError, match="list of mappings"):
            clinic.batch(wrong)
    with pytest.raises(ValueError, match="'error'"):
        clinic.batch([{"error": 1}], keep=["error"])


def test_an_impossible_row_costs_itself_only(clinic):
    weights = pandas.Series([1.0, 0.0]).to_numpy()
    rows = [{"either": "no", "cancer": "yes"}, {"either": weights, "cancer": None}, {"either": weights}]
    results = clinic.batch(rows, ["tuberculosis"])
    assert isinstance(results["error"][0], str) and results["error"][1] is None
    assert results["tuberculosis=yes"][1] == results["tuberculosis=yes"][2]
    assert results["tuberculosis=yes"][1] == pytest.approx(0.0104 / 0.064828)


def test_columns_of_all_sorts(oil):
    assert "profit:expected" in oil.batch([{"test": "yes"}]).columns
    with quarn.Domain() as domain:
        dice = domain.add_chance("dice", range(1, 7))
        domain.add_continuous("x", [dice], mean=list(range(6)))
        domain.add_function("half", "1 / (dice - 2)", [dice])
        results = domain.batch(pandas.DataFrame({"dice": [4.0, None, 2]}), ["dice", "x", "half"])
        assert list(results.columns[6:]) == ["dice:mean", "x:mean", "x:variance", "half", "log_p", "error"]
        assert list(results["x:mean"]) == pytest.approx([3, 2.5, 1])
        assert list(results["dice=4"]) == pytest.approx([1, 1 / 6, 0])
        assert results["half"][0] == 0.5 and math.isnan(results["half"][2]) and results["error"][2] is None
