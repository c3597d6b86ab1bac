"""Without numpy and pandas everything works with what Python has."""

import subprocess
import sys

from conftest import EXAMPLES

PROGRAM = """
import sys
sys.modules["numpy"] = sys.modules["pandas"] = None
import quarn

domain = quarn.Domain.load(sys.argv[1] + "/chest_clinic.net")
xray = domain["xray"]
assert isinstance(xray.belief, list) and abs(sum(xray.belief) - 1) < 1e-12
table = xray.table
assert isinstance(table, memoryview) and table.shape == (2, 2)
table[1, 0], table[1, 1] = 0.25, 0.75
assert abs(xray.belief[0] - (0.064828 * 0.98 + 0.935172 * 0.25)) < 1e-6
for wrong in ([1, 2], [[1, 2, 3], [4, 5, 6]]):
    try:
        xray.table = wrong
        raise AssertionError(wrong)
    except ValueError:
        pass
xray.table = [[0.98, 0.02], [0.05, 0.95]]
assert table.tolist()[1] == [0.05, 0.95]
try:
    xray.add_parent("asia")
    raise AssertionError("the table is in use")
except BufferError:
    pass
rows = domain.batch([{"xray": "yes"}, {"xray": "perhaps"}], ["cancer"])
assert list(rows[0]) == ["cancer=yes", "cancer=no", "log_p", "error"] and rows[1]["error"]
assert set(domain.sample(3)[0]) == set(domain)
oil = quarn.Domain.load(sys.argv[1] + "/oil_wildcatter.net")
assert oil.solve()["test"] == [1, 0] and oil.expected_utility == 22.5
"""


def test_without_numpy():
    subprocess.run([sys.executable, "-c", PROGRAM, str(EXAMPLES)], check=True)
