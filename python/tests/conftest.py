import pathlib

import fcurvelib as fc
import pytest
from hypothesis import HealthCheck, settings

settings.register_profile("tests", max_examples=40, deadline=None, derandomize=True, database=None,
                          suppress_health_check=[HealthCheck.too_slow])
settings.load_profile("tests")


@pytest.fixture
def ball():
    return fc.Curve("height", [(1, 0), (12, 8), (24, 0)])


@pytest.fixture
def data():
    return pathlib.Path(__file__).resolve().parents[2] / "examples" / "data"
