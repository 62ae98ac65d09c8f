#!/usr/bin/env python3
"""Fails when a source file includes a header of a folder that stands above its own in the layer order, and when one
reads or prints a real number through the C library, which takes the decimal comma of the user's locale."""
import pathlib
import re
import sys

# What each folder may include besides itself and EVERYWHERE. Folders are named by their path below src/.
ALLOWED = {
    "strings": [],
    "math": [],
    "engine": ["math"],
    "doc": ["math", "engine"],
    "cmd": ["math", "engine", "doc", "io", "io/native", "io/dxf", "io/dwg", "render"],
    "render": ["math", "engine"],
    "io": ["math", "engine"],
    "io/native": ["math", "engine", "io"],
    "io/dxf": ["math", "engine", "io", "io/native"],
    "io/dwg": ["math", "engine", "io", "io/dxf", "kdraw"],
    "kdraw": ["math"],
    "script/lisp": ["math", "engine", "doc", "cmd"],
    "headless": ["math", "engine", "doc", "cmd", "render", "io", "io/native", "io/dxf", "io/dwg", "script/lisp"],
    "script/python": ["math", "engine", "doc", "cmd", "io", "io/native", "headless"],
    "cli": ["math", "engine", "doc", "cmd", "render", "io", "io/native", "io/dxf", "io/dwg", "kdraw",
            "script/lisp", "script/python", "headless"],
}
# The ground floor, which every folder may include.
EVERYWHERE = "strings"

# Reading and printing of reals by the locale: strings/numbers.hpp has what takes their place.
READS_REALS = re.compile(r"\b(strto(d|f|ld)|wcsto(d|f|ld)|sto(d|f|ld)|atof|[fs]?scanf)\s*\(")
PRINTS_REALS = re.compile(r'printf\s*\(.*?%[-+ #0]*[0-9*]*(\.[0-9*]+)?(l|L)?[aefgAEFG]')


def literals_only(code):
    """A line for READS_REALS: without comments and texts."""
    return re.sub(r'"(\\.|[^"\\])*"', '""', code).split("//")[0]


def locale_faults(text):
    """Numbers of lines that read or print reals by the locale. A call of printf may run over several lines."""
    lines = text.splitlines()
    for number, line in enumerate(lines, 1):
        if READS_REALS.search(literals_only(line)) and not re.search(r"\bValue atof\(", line):
            yield number
        elif "printf" in line:
            call = " ".join(lines[number - 1:number + 3]).split(");")[0]
            if PRINTS_REALS.search(call):
                yield number


def folder_of(path):
    """The longest known folder that holds the path, or None."""
    parts = path.split("/")[:-1]
    for n in range(len(parts), 0, -1):
        if "/".join(parts[:n]) in ALLOWED:
            return "/".join(parts[:n])
    return None


def main():
    root = pathlib.Path(sys.argv[1])
    failures = []
    checked = 0
    for file in sorted(root.rglob("*")):
        if file.suffix not in (".cpp", ".hpp") or file.parent == root:
            continue
        own = folder_of(file.relative_to(root).as_posix())
        if own is None:
            failures.append(f"{file}: its folder is not in the layer order")
            continue
        text = file.read_text(encoding="utf-8")
        if own != EVERYWHERE:
            failures += [f"{file}:{n}: real numbers are read and printed by strings/numbers.hpp" for n in locale_faults(text)]
        for number, line in enumerate(text.splitlines(), 1):
            match = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
            if not match or not (root / match.group(1)).exists():
                continue
            checked += 1
            other = folder_of(match.group(1))
            if other and other not in (own, EVERYWHERE) and other not in ALLOWED[own]:
                failures.append(f"{file}:{number}: {own} must not include {match.group(1)}")
    print("\n".join(failures) or f"{checked} includes, all downwards")
    return 1 if failures or checked == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
