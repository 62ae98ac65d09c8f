"""Two commands written in Python: PYLOAD examples/commands.py, then GRIDLINES 5 1000 or TOTALLENGTH."""

import math

from kova.cmd import command
from kova.doc import current
from kova.ent import Line


@command("GRIDLINES", title="Grid of lines")
def grid_lines(count="5", spacing="1000"):
    """Draws count x count construction cells."""
    count, spacing = int(count), float(spacing)
    space, size = current().model_space, count * spacing
    for i in range(count + 1):
        space.add(Line((i * spacing, 0), (i * spacing, size)))
        space.add(Line((0, i * spacing), (size, i * spacing)))
    print(f"{2 * (count + 1)} lines drawn.")


@command("TOTALLENGTH", title="Total length of lines")
def total_length():
    """Adds up the lengths of all lines of model space."""
    total = math.fsum(line.start.distance_to(line.end) for line in current().model_space.filter(Line))
    print(f"Total length: {total:g}")
