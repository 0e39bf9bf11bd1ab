"""Print which share of the lines of src the C++ tests run, by folder, and the files that lack most.

usage: coverage.py SUMMARY LEAST: the summary in JSON that gcovr wrote, and the least percentage
that will do; below it the exit status is 1.
"""

import json
import sys
from collections import defaultdict
from pathlib import PurePath


def main(summary: str, least: float) -> int:
    with open(summary) as file:
        files = json.load(file)["files"]
    folders = defaultdict(lambda: [0, 0])
    for each in files:
        below = PurePath(each["filename"]).relative_to("src/zeltbraidwerk").parts
        for name in (below[0], "total"):
            folders[name][0] += each["line_covered"]
            folders[name][1] += each["line_total"]
    shares = {name: 100 * run / lines for name, (run, lines) in folders.items()}
    for name in sorted(folders, key=lambda name: (name == "total", name)):
        run, lines = folders[name]
        print(f"{shares[name]:6.2f} %  {run:6} of {lines:6}  {name}")
    print("Files that lack most:")
    lacking = sorted(files, key=lambda each: each["line_covered"] - each["line_total"])
    for each in lacking[:10]:
        print(f"{each['line_total'] - each['line_covered']:5} lines  {each['filename']}")
    if shares["total"] < least:
        print(f"Covered: {shares['total']:.2f} %, wanted at least {least} %.")
    return shares["total"] < least


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], float(sys.argv[2])))
