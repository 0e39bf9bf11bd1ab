"""Sphinx configuration; ``./dev docs`` builds into build/docs."""

import sys
from pathlib import Path

import zeltbraidwerk

sys.path.insert(0, str(Path(__file__).parent / "_ext"))

project = "zeltbraidwerk"
version = release = zeltbraidwerk.__version__
author = "the zeltbraidwerk authors"

extensions = [
    "myst_nb",
    "sphinx.ext.autodoc",
    "sphinx.ext.napoleon",
    "core_reference",
    "cpp_reference",
]
exclude_patterns = ["_ext", "paper", "requirements.txt"]
myst_enable_extensions = ["colon_fence"]
autodoc_typehints = "description"
autodoc_member_order = "bysource"

# Notebooks are committed without outputs and run by every build; an error in a cell ends it.
nb_execution_mode = "force"
nb_execution_raise_on_error = True
nb_execution_timeout = 60
nb_execution_show_tb = True
nb_merge_streams = True

# A C++ name that leads nowhere is a warning, and so an error of the build.
nitpicky = True
nitpick_ignore_regex = [
    ("cpp:identifier", r"(std|stim|lemon|zelt)(::.*)?|structures|synthesis|routines"),
    ("py:.*", ".*"),
]

html_theme = "furo"
html_title = f"zeltbraidwerk {version}"
