#!/usr/bin/env python3
"""Writes a DXF drawing with many of one thing for measurements: many_dxf.py KIND FILE COUNT.

KIND: dimensions, dictionaries (lines with an extension dictionary each), shared (lines with one extension dictionary of
COUNT entries), blocks (definitions with a reference each), layers (with a line each). Always the same bytes.
"""
import sys


def main():
    kind, path, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    out = []

    def put(*groups):
        for code, value in groups:
            out.append(f"{code}\n{value}\n")

    def section(name):
        put((0, "SECTION"), (2, name))

    def line(i, layer="0", dictionary=None):
        put((0, "LINE"), (5, f"{0x1000000 + i:X}"))
        if dictionary is not None:
            put((102, "{ACAD_XDICTIONARY"), (360, f"{dictionary:X}"), (102, "}"))
        put((100, "AcDbEntity"), (8, layer), (100, "AcDbLine"), (10, i % 1000), (20, i // 1000), (11, i % 1000 + 0.5), (21, i // 1000))

    def dictionary(handle, entries):
        put((0, "DICTIONARY"), (5, f"{handle:X}"), (100, "AcDbDictionary"))
        for key, value in entries:
            put((3, key), (350, f"{value:X}"))

    section("HEADER")
    put((9, "$ACADVER"), (1, "AC1027"), (9, "$HANDSEED"), (5, "FFFFFFF"), (0, "ENDSEC"))
    if kind == "layers":
        section("TABLES")
        put((0, "TABLE"), (2, "LAYER"))
        for i in range(count):
            put((0, "LAYER"), (2, f"Layer {i}"), (70, 0), (62, i % 7 + 1), (6, "Continuous"))
        put((0, "ENDTAB"), (0, "ENDSEC"))
    if kind == "blocks":
        section("BLOCKS")
        for i in range(count):
            put((0, "BLOCK"), (8, "0"), (2, f"Block {i}"), (70, 0), (10, 0), (20, 0), (0, "POINT"), (8, "0"), (10, 1), (20, 1), (0, "ENDBLK"))
        put((0, "ENDSEC"))
    section("ENTITIES")
    for i in range(count):
        if kind == "layers":
            line(i, f"Layer {i}")
        elif kind == "blocks":
            put((0, "INSERT"), (5, f"{0x1000000 + i:X}"), (100, "AcDbEntity"), (8, "0"), (100, "AcDbBlockReference"),
                (2, f"Block {i}"), (10, i % 1000), (20, i // 1000))
        elif kind == "dimensions":
            x, y = (i % 300) * 30, (i // 300) * 30
            put((0, "DIMENSION"), (5, f"{0x1000000 + i:X}"), (100, "AcDbEntity"), (8, "0"), (100, "AcDbDimension"), (10, x + 20), (20, y + 8),
                (70, 32), (3, "Standard"), (100, "AcDbAlignedDimension"), (13, x), (23, y), (14, x + 20), (24, y),
                (100, "AcDbRotatedDimension"))
        elif kind == "shared":
            line(i, dictionary=0x20)
        else:
            line(i, dictionary=0x4000000 + i)
    put((0, "ENDSEC"))
    section("OBJECTS")
    dictionary(0xC, [])
    if kind == "shared":
        dictionary(0x20, [(f"KEY {i}", 0x21) for i in range(count)])
    if kind == "dictionaries":
        for i in range(count):
            dictionary(0x4000000 + i, [("DATA", 0x21)])
    put((0, "XRECORD"), (5, "21"), (100, "AcDbXrecord"), (1, "data"), (0, "ENDSEC"), (0, "EOF"))
    with open(path, "w") as file:
        file.writelines(out)


if __name__ == "__main__":
    main()
