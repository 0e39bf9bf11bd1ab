"""The command ``zeltbraidwerk``, also as ``python -m zeltbraidwerk``."""

import sys

from zeltbraidwerk._shell import main

if __name__ == "__main__":
    sys.exit(main())
