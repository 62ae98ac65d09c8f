#!/usr/bin/env python3
"""Writes the linetype and hatch pattern libraries from their tables.

    make_libraries.py [TABLES [OUT]]

TABLES is a folder ("tables" beside this script unless given) with hatch-patterns.csv (name, description, origin, angle, x0, y0, dx, dy, dashes; one row per
family of lines) and linetypes.csv (name, description, metric_dashes, metric_length, imperial_dashes,
imperial_length). The files kovacad.pat, kovacad.lin and kovacad-imperial.lin are written to OUT, this folder
unless given. Run it after a change of the tables; the build only reads what it wrote.
"""
import csv
import pathlib
import sys


def rows(path):
    with open(path, newline="", encoding="utf-8") as file:
        yield from csv.DictReader(file)


def pattern_library(path):
    lines = [";; KovaCAD Standard Hatch Pattern Definitions",
             ";; Compatible with AutoCAD .pat format",
             ";; Lengths in millimetres.", ""]
    last = None
    for row in rows(path):
        if row["name"] != last:
            if last is not None:
                lines.append("")
            last = row["name"]
            lines.append(f"*{last},{row['description']}")
        dashes = "".join(", " + dash for dash in row["dashes"].split())
        lines.append(f"{row['angle']}, {row['x0']},{row['y0']}, {row['dx']},{row['dy']}{dashes}")
    return "\n".join(lines) + "\n"


def linetype_library(path, column, unit):
    lines = [";; KovaCAD Standard Linetype Definitions", f";; Lengths in {unit}.", ""]
    for row in rows(path):
        lines.append(f"*{row['name']},{row['description']}")
        lines.append("A," + ",".join(row[column].split()))
    return "\n".join(lines) + "\n"


def main():
    here = pathlib.Path(__file__).parent
    tables = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else here / "tables"
    out = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else here
    files = {
        "kovacad.pat": pattern_library(tables / "hatch-patterns.csv"),
        "kovacad.lin": linetype_library(tables / "linetypes.csv", "metric_dashes", "millimetres"),
        "kovacad-imperial.lin": linetype_library(tables / "linetypes.csv", "imperial_dashes", "inches"),
    }
    for name, text in files.items():
        (out / name).write_text(text, encoding="utf-8", newline="\n")


main()
