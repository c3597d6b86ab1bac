"""What the tests share."""

from pathlib import Path

import pytest

import quarn

EXAMPLES = Path(__file__).parents[2] / "examples"


@pytest.fixture
def clinic():
    with quarn.Domain.load(EXAMPLES / "chest_clinic.net") as domain:
        yield domain


@pytest.fixture
def oil():
    with quarn.Domain.load(EXAMPLES / "oil_wildcatter.net") as domain:
        yield domain
