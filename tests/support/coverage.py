"""Print which share of the lines of src the C++ tests run, by folder, and the files that lack most.

usage: coverage.py REPORT LEAST: the report in JSON that gcovr wrote, and the least percentage that
will do; below it the exit status is 1. A line of a template counts once, whatever it is made for.
"""

import json
import sys
from collections import Counter, defaultdict
from pathlib import PurePath


def main(report: str, least: float) -> int:
    with open(report) as file:
        files = json.load(file)["files"]
    run, lines, lacking = Counter(), Counter(), Counter()
    for each in files:
        counts = defaultdict(int)
        for line in each["lines"]:
            counts[line["line_number"]] += line["count"]
        covered = sum(count > 0 for count in counts.values())
        lacking[each["file"]] = len(counts) - covered
        for name in (PurePath(each["file"]).parts[2], "total"):
            run[name] += covered
            lines[name] += len(counts)
    for name in sorted(lines, key=lambda name: (name == "total", name)):
        share = 100 * run[name] / lines[name]
        print(f"{share:6.2f} %  {run[name]:6} of {lines[name]:6}  {name}")
    print("Files that lack most:")
    for name, count in lacking.most_common(10):
        print(f"{count:5} lines  {name}")
    if share < least:
        print(f"Covered: {share:.2f} %, wanted at least {least} %.")
    return share < least


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], float(sys.argv[2])))
