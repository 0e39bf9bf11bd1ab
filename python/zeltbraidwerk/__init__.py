"""Synthesis of quantum circuits."""

from zeltbraidwerk import core
from zeltbraidwerk._core import __version__

__all__ = ["__version__", "core"]
