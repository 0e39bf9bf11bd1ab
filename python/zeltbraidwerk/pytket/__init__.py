"""Passes for pytket. Importing this module imports pytket."""

from zeltbraidwerk import errors

try:
    import pytket as _pytket  # noqa: F401
except ImportError:
    raise errors.MissingPackageError(
        "zeltbraidwerk.pytket needs the package pytket: pip install pytket, or "
        "pip install 'zeltbraidwerk[interop]'"
    ) from None

from zeltbraidwerk.pytket._pass import optimize_pass

__all__ = ["optimize_pass"]
