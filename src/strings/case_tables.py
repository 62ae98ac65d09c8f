#!/usr/bin/env python3
"""Writes case_tables.cpp: the simple case mappings of Unicode, as this Python's unicodedata knows them."""
import pathlib
import unicodedata


def simple_upper(c):
    """Python has the full mappings; where one gives several letters, the title case may be the single one."""
    for mapped in (c.upper(), c.title()):
        if len(mapped) == 1:
            return mapped
    return c


def simple_lower(c):
    mapped = c.lower()
    return mapped if len(mapped) == 1 else c  # U+0130 alone keeps its dot


def simple_fold(c):
    mapped = c.casefold()
    if len(mapped) == 1:
        return mapped
    return c.lower() if len(c.lower()) == 1 else c


def ranges(mapping):
    """Runs of code points with the same shift, each one or each second."""
    pairs = [(c, ord(mapping(chr(c))) - c) for c in range(0x110000) if not 0xD800 <= c < 0xE000]
    pairs = [(c, shift) for c, shift in pairs if shift]
    out = []
    for c, shift in pairs:
        if out:
            first, last, step, known = out[-1]
            if known == shift and c - last in (1, 2) and (step == 0 or step == c - last):
                out[-1] = (first, c, c - last, shift)
                continue
        out.append((c, c, 0, shift))
    return [(first, last, step or 1, shift) for first, last, step, shift in out]


def table(name, mapping):
    rows = "".join(f"    {{0x{a:04X}, 0x{b:04X}, {step}, {shift}}},\n" for a, b, step, shift in ranges(mapping))
    return f"constexpr CaseRange {name}[] = {{\n{rows}}};\n"


def main():
    major, minor = unicodedata.unidata_version.split(".")[:2]
    text = ("// Made by case_tables.py; do not edit.\n// clang-format off\n"
            '#include "strings/case_tables.hpp"\n\nnamespace kova::strings {\n\nnamespace {\n\n')
    text += "\n".join(table(name, mapping) for name, mapping in
                      (("kFold", simple_fold), ("kUpper", simple_upper), ("kLower", simple_lower)))
    text += ("\n}  // namespace\n\nstd::span<const CaseRange> foldTable() { return kFold; }\n"
             "std::span<const CaseRange> upperTable() { return kUpper; }\n"
             "std::span<const CaseRange> lowerTable() { return kLower; }\n"
             f"UnicodeVersion caseTableVersion() {{ return {{{major}, {minor}}}; }}\n\n}}  // namespace kova::strings\n")
    pathlib.Path(__file__).with_name("case_tables.cpp").write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
