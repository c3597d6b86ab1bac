"""Tables as arrays over the library's memory: never stale, never dangling."""

import gc

import pytest
from conftest import EXAMPLES

import quarn

numpy = pytest.importorskip("numpy")


def test_an_array_is_the_table(clinic):
    table = clinic["xray"].table
    assert table.shape == (2, 2) and [node.name for node in clinic["xray"].table_nodes] == ["either", "xray"]
    assert table is not clinic["xray"].table and numpy.shares_memory(table, clinic["xray"].table)
    assert clinic["xray"].belief[0] == pytest.approx(0.11029, abs=1e-5)
    row = table[1]
    del table
    row[:] = [1, 3]
    assert clinic["xray"].belief[0] == pytest.approx(0.064828 * 0.98 + 0.935172 * 0.25, abs=1e-5)
    assert row[0] == 0.25
    row[0] = 0.75
    del row
    assert clinic["xray"].belief[0] == pytest.approx(0.064828 * 0.98 + 0.935172 * 0.5, abs=1e-5)
    with pytest.raises(ValueError):
        clinic["xray"].table = [1, 2, 3]


def test_a_table_in_use_keeps_its_shape(clinic):
    either, xray = clinic["either"], clinic["xray"]
    part = xray.table[0, :1]
    for change in (
        lambda: xray.add_parent("asia"),
        lambda: xray.remove_parent("either"),
        lambda: setattr(either, "states", ["a", "b", "c"]),
        lambda: setattr(xray, "states", 3),
        either.delete,
        xray.delete,
    ):
        with pytest.raises(BufferError, match="xray"):
            change()
    clinic["dyspnoea"].add_parent("asia")
    assert part[0] == 0.98
    del part
    xray.add_parent("asia")
    assert xray.table.shape == (2, 2, 2)


def test_an_array_outlives_its_domain():
    domain = quarn.Domain.load(EXAMPLES / "chest_clinic.net")
    closed = domain["xray"].table
    domain.close()
    forgotten = quarn.Domain.load(EXAMPLES / "chest_clinic.net")["xray"].table
    gc.collect()
    others = [quarn.Domain.load(EXAMPLES / "chest_clinic.net") for _ in range(5)]
    closed[0, 0] = 7
    assert (closed[0, 0], forgotten[0, 0], len(others)) == (7, 0.98, 5)
