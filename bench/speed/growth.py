"""Plots how the Pauli syntheses grow with the number of rotations.

growth.py PROGRAM [file]     PROGRAM is bench/speed/pauli of a release build; the picture (SVG) goes
                             to the file, or to growth.svg
"""

import json
import math
import re
import subprocess
import sys
from pathlib import Path

WIDTH, HEIGHT, LEFT, BOTTOM = 560, 380, 60, 40
INKS = ("#1f5fbf", "#c2410c", "#15803d", "#7e22ce")
NAME = re.compile(r"synthesise<(\w+)>/(\d+)")


def measured(program: str) -> dict[str, list[tuple[int, float]]]:
    """Points (rotations, milliseconds of processor time) a synthesis."""
    command = [program, "--benchmark_filter=synthesise", "--benchmark_format=json"]
    command.append("--benchmark_min_time=0.05")
    done = subprocess.run(command, check=True, capture_output=True, text=True)
    curves: dict[str, list[tuple[int, float]]] = {}
    for row in json.loads(done.stdout)["benchmarks"]:
        name, count = NAME.fullmatch(row["name"]).groups()
        curves.setdefault(name, []).append((int(count), row["cpu_time"]))
    return curves


def picture(curves: dict[str, list[tuple[int, float]]]) -> str:
    points = [point for curve in curves.values() for point in curve]
    most = math.ceil(math.log10(max(time for _, time in points)))
    least = math.floor(math.log10(min(time for _, time in points)))

    def at(count: float, time: float) -> tuple[float, float]:
        x = LEFT + (math.log10(count) - 2) / 3 * (WIDTH - LEFT - 20)
        y = 20 + (most - math.log10(time)) / (most - least) * (HEIGHT - BOTTOM - 20)
        return x, y

    parts = []
    for power in range(2, 6):
        x, y = at(10**power, 10**least)
        parts.append(f'<path d="M{x:.1f} 20V{y:.1f}" stroke="#d0d7de"/>')
        parts.append(f'<text x="{x - 12:.1f}" y="{y + 18:.1f}">1e{power}</text>')
    for power in range(least, most + 1):
        x, y = at(100, 10**power)
        parts.append(f'<path d="M{x:.1f} {y:.1f}H{WIDTH - 20}" stroke="#d0d7de"/>')
        parts.append(f'<text x="4" y="{y + 4:.1f}">{10.0**power:g} ms</text>')
    for place, (name, curve) in enumerate(curves.items()):
        ink = INKS[place % len(INKS)]
        line = "L".join("{:.1f} {:.1f}".format(*at(*point)) for point in curve)
        parts.append(f'<path d="M{line}" stroke="{ink}" fill="none" stroke-width="2"/>')
        parts.append(f'<text x="{LEFT + 10}" y="{36 + 16 * place}" fill="{ink}">{name}</text>')
    parts.append(f'<text x="{WIDTH / 2 - 40}" y="{HEIGHT - 6}">rotations, 20 qubits</text>')
    return (
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
        f'font-family="sans-serif" font-size="12"><rect width="100%" height="100%" fill="#fff"/>'
        f"{''.join(parts)}</svg>\n"
    )


def main() -> int:
    if len(sys.argv) not in (2, 3):
        print(__doc__, file=sys.stderr)
        return 2
    curves = measured(sys.argv[1])
    for name, curve in curves.items():
        print(name, "  ".join(f"{count}: {time:.3g} ms" for count, time in curve))
    Path(sys.argv[2] if len(sys.argv) == 3 else "growth.svg").write_text(picture(curves))
    return 0


if __name__ == "__main__":
    sys.exit(main())
