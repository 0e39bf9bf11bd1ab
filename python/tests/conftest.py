import numpy as np
import pytest
from hypothesis import settings
from support import product

settings.register_profile("default", deadline=None, max_examples=40, derandomize=True)
settings.load_profile("default")


@pytest.fixture
def dense():
    """A random invertible matrix by size, the same one every time."""

    def build(n, seed=0):
        rng = np.random.default_rng([n, seed])
        lower = np.tril(rng.integers(0, 2, (n, n)), -1) + np.eye(n, dtype=int)
        upper = np.triu(rng.integers(0, 2, (n, n)), 1) + np.eye(n, dtype=int)
        return product(lower, upper)[rng.permutation(n)]

    return build
