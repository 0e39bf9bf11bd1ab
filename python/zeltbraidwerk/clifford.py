"""Clifford operators as tableaus, and circuits for them, for stabilizer states and for codes.

>>> import zeltbraidwerk as zb
>>> swap = ["IX", "XI"], ["IZ", "ZI"]  # the images of X and of Z
>>> zb.clifford.synthesize(swap).count, zb.clifford.synthesize(swap, permutation="free").count
(3, 0)
"""

from zeltbraidwerk._encoders import EncoderSynthesis, synthesize_encoder
from zeltbraidwerk._operators import CliffordSynthesis, methods, synthesize
from zeltbraidwerk._states import StateSynthesis, synthesize_state
from zeltbraidwerk._tableau import CliffordTableau

__all__ = [
    "CliffordSynthesis",
    "CliffordTableau",
    "EncoderSynthesis",
    "StateSynthesis",
    "methods",
    "synthesize",
    "synthesize_encoder",
    "synthesize_state",
]
