#!/usr/bin/env python3
"""Writes a DXF drawing of COUNT mixed entities for measurements: mixed_dxf.py FILE COUNT.

55 % lines, 15 % polylines of 4 to 12 vertices, 8 % circles, 8 % arcs, 8 % texts, 3 % block references, 2 % solid
hatches and 1 % multiline texts on 50 layers. The same count always gives the same bytes.
"""
import math
import random
import sys

LAYERS, BLOCKS = 50, 20


def main():
    path, count = sys.argv[1], int(sys.argv[2])
    rng = random.Random(count)
    side = 10.0 * math.sqrt(count)
    handle = 0x100
    out = []

    def put(*groups):
        for code, value in groups:
            out.append(f"{code:>3}\n{value}\n")

    def begin(kind, *markers):
        nonlocal handle
        handle += 1
        put((0, kind), (5, f"{handle:X}"), (100, "AcDbEntity"), (8, f"L{rng.randrange(LAYERS)}"))
        if rng.random() < 0.3:
            put((62, rng.randrange(1, 8)))
        put(*((100, m) for m in markers))

    def at(code, x, y, z=None):
        put((code, repr(x)), (code + 10, repr(y)))
        if z is not None:
            put((code + 20, repr(z)))

    def spot():
        return round(rng.uniform(0, side), 4), round(rng.uniform(0, side), 4)

    put((0, "SECTION"), (2, "HEADER"), (9, "$ACADVER"), (1, "AC1015"), (9, "$HANDSEED"), (5, "FFFFFFF"), (0, "ENDSEC"))
    put((0, "SECTION"), (2, "TABLES"), (0, "TABLE"), (2, "LAYER"), (70, LAYERS))
    for i in range(LAYERS):
        put((0, "LAYER"), (100, "AcDbSymbolTableRecord"), (100, "AcDbLayerTableRecord"), (2, f"L{i}"), (70, 0),
            (62, i % 7 + 1), (6, "Continuous"))
    put((0, "ENDTAB"), (0, "ENDSEC"), (0, "SECTION"), (2, "BLOCKS"))
    for i in range(BLOCKS):
        put((0, "BLOCK"), (100, "AcDbEntity"), (8, "0"), (100, "AcDbBlockBegin"), (2, f"B{i}"), (70, 0))
        at(10, 0.0, 0.0, 0.0)
        for k in range(4):
            begin("LINE", "AcDbLine")
            at(10, float(k), 0.0, 0.0)
            at(11, float(k), 1.0 + i / 7, 0.0)
        put((0, "ENDBLK"), (100, "AcDbEntity"), (8, "0"), (100, "AcDbBlockEnd"))
    put((0, "ENDSEC"), (0, "SECTION"), (2, "ENTITIES"))
    for _ in range(count):
        kind = rng.random()
        x, y = spot()
        if kind < 0.55:
            begin("LINE", "AcDbLine")
            at(10, x, y, 0.0)
            at(11, round(x + rng.uniform(-9, 9), 4), round(y + rng.uniform(-9, 9), 4), 0.0)
        elif kind < 0.70:
            n = rng.randrange(4, 13)
            begin("LWPOLYLINE", "AcDbPolyline")
            put((90, n), (70, rng.randrange(2)))
            for _ in range(n):
                at(10, round(x + rng.uniform(-5, 5), 4), round(y + rng.uniform(-5, 5), 4))
                if rng.random() < 0.25:
                    put((42, round(rng.uniform(-1, 1), 3)))
        elif kind < 0.78:
            begin("CIRCLE", "AcDbCircle")
            at(10, x, y, 0.0)
            put((40, round(rng.uniform(0.5, 4), 3)))
        elif kind < 0.86:
            begin("ARC", "AcDbCircle")
            at(10, x, y, 0.0)
            put((40, round(rng.uniform(0.5, 4), 3)), (100, "AcDbArc"), (50, rng.randrange(360)), (51, rng.randrange(360)))
        elif kind < 0.94:
            begin("TEXT", "AcDbText")
            at(10, x, y, 0.0)
            put((40, 2.5), (1, f"Text {rng.randrange(100000)}"), (100, "AcDbText"))
        elif kind < 0.97:
            begin("INSERT", "AcDbBlockReference")
            put((2, f"B{rng.randrange(BLOCKS)}"))
            at(10, x, y, 0.0)
            put((50, rng.randrange(360)))
        elif kind < 0.99:
            n = rng.randrange(4, 9)
            begin("HATCH", "AcDbHatch")
            at(10, 0.0, 0.0, 0.0)
            put((210, 0.0), (220, 0.0), (230, 1.0), (2, "SOLID"), (70, 1), (71, 0), (91, 1), (92, 1), (93, n))
            ring = [(x + 3 * math.cos(2 * math.pi * k / n), y + 3 * math.sin(2 * math.pi * k / n)) for k in range(n)]
            for k in range(n):
                put((72, 1))
                at(10, *ring[k])
                at(11, *ring[(k + 1) % n])
            put((97, 0), (75, 0), (76, 1), (98, 0))
        else:
            begin("MTEXT", "AcDbMText")
            at(10, x, y, 0.0)
            put((40, 2.0), (41, 30.0), (71, 1), (72, 1), (1, f"Paragraph {rng.randrange(1000)}\\PSecond line"))
    put((0, "ENDSEC"), (0, "EOF"))
    with open(path, "w", encoding="ascii") as file:
        file.writelines(out)


if __name__ == "__main__":
    main()
