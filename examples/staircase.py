"""A spiral staircase in plan: kovacad-cli run -c "PYSCRIPT examples/staircase.py" --save staircase.kvcad"""

import math

from kova.doc import current, transaction
from kova.ent import Arc, Circle, Line, Text

STEPS = 14
INNER, OUTER = 200.0, 1100.0

space = current().model_space
with transaction("Staircase"):
    layers = current().drawing.layers
    layers.ensure("Stairs", color="cyan")
    layers.ensure("Numbers", color=8)
    sweep = 1.5 * math.pi / STEPS
    for step in range(STEPS + 1):
        direction = (math.cos(step * sweep), math.sin(step * sweep))
        space.add(Line(start=[INNER * c for c in direction], end=[OUTER * c for c in direction], layer_name="Stairs"))
        if step < STEPS:
            middle = (step + 0.5) * sweep
            at = (0.8 * OUTER * math.cos(middle), 0.8 * OUTER * math.sin(middle))
            space.add(Text(insertion_point=at, height=60, content=str(step + 1), layer_name="Numbers"))
    space.add(Circle(center=(0, 0), radius=INNER, layer_name="Stairs"))
    space.add(Arc(center=(0, 0), radius=OUTER, start_angle=0, end_angle=1.5 * math.pi, layer_name="Stairs"))

print(f"{STEPS} steps, {len(space)} entities")
