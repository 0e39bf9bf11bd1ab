"""Sphinx configuration; ``./dev docs`` builds into build/docs."""

import sys
from pathlib import Path

import zeltbraidwerk

sys.path.insert(0, str(Path(__file__).parent / "_ext"))

project = "zeltbraidwerk"
version = release = zeltbraidwerk.__version__
author = "the zeltbraidwerk authors"

extensions = ["myst_parser", "sphinx.ext.autodoc", "sphinx.ext.napoleon", "cpp_headers"]
exclude_patterns = ["_ext", "paper", "requirements.txt"]
myst_enable_extensions = ["colon_fence"]
autodoc_typehints = "description"
autodoc_member_order = "bysource"

html_theme = "furo"
html_title = f"zeltbraidwerk {version}"
