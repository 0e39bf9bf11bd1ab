"""Many inputs on many processors, and one search over many seeds.

:func:`run` and :func:`stream` do a family's function on every input, :func:`race` on one input with
many seeds: in a process pool, any executor of :mod:`concurrent.futures`, or a cluster of Dask. A
results file keeps what is done, so that the same call goes on after anything that stopped it.
:func:`read` reads such files, :func:`merge` puts those of many machines together.
"""

import sys

from zeltbraidwerk import _public
from zeltbraidwerk.batch._merge import merge
from zeltbraidwerk.batch._progress import Progress
from zeltbraidwerk.batch._records import Record, Results, read
from zeltbraidwerk.batch._run import race, run, stream

__all__ = ["Progress", "Record", "Results", "merge", "race", "read", "run", "stream"]

_public.tidy(sys.modules[__name__])
