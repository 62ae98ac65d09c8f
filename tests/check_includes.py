#!/usr/bin/env python3
"""Holds the rooms of src/ to their floors: a file includes what stands in its own room or on a lower floor, and nothing else.

Fails on an include that runs upward or across a floor, on a folder that has no floor, on an entry of STILL_UPWARD that is mended but
still named, on a room with more than 40 files (a source and its header count once), and on a real number that is read or
printed through the C library, which takes the decimal comma of the user's locale.
"""
import collections
import pathlib
import re
import sys

# From the ground up. Rooms on one line stand on one floor and do not include each other.
FLOORS = [
    "strings",
    "math  io",
    "math/curves  io/dxf/groups  kdraw/fields",
    "engine/model  engine/solids  math/kernels  kdraw/groups  kdraw/container",
    "engine/fonts  engine/libraries  kdraw/objects  kdraw/entities",
    "engine/text  kdraw/database",
    "engine/entities",
    "engine/entities/dimensions",
    "engine/kinds  engine/outline  engine/curves  engine/symbols  engine/sysvars",
    "engine/modify  engine/inquiry  engine/pick  engine/associativity  engine/audit  render  io/json",
    "doc  io/native  io/dxf",
    "doc/pick  io/dxf/reading  io/dxf/writing",
    "edit  io/dwg",
    "cmd",
    "cmd/prompts",
    "cmd/commands/draw  cmd/commands/modify  cmd/commands/edit  cmd/commands/view  cmd/commands/format  cmd/commands/insert"
    "  cmd/commands/annotate  cmd/commands/inquiry  cmd/commands/settings  cmd/commands/tools  cmd/commands/file  cmd/commands/help"
    "  cmd/commands/tables",
    "cmd/commands/modify/text",
    "script/lisp",
    "script/lisp/entities",
    "script/lisp/builtins",
    "headless",
    "script/python",
    "cli",
]

# What a room never includes, though it stands on a lower floor.
NEVER = {
    "kdraw": ["engine"],
    "io": ["doc", "edit", "cmd"],
    "render": ["doc"],
    "edit": ["io"],
    "script/lisp": ["io/dxf", "io/dwg", "io/native", "io/json"],
}

# Includes that still run upward, each to be ended: (file, included file).
STILL_UPWARD = {
    ("cmd/registry.cpp", "cmd/commands/tables/variables.hpp"),
    ("cmd/selection.cpp", "cmd/prompts/name_prompts.hpp"),
    ("doc/pick/picking.cpp", "cmd/point_input.hpp"),
    ("doc/pick/through_viewport.cpp", "edit/viewports.hpp"),
    ("edit/block_attributes.hpp", "cmd/dialogue.hpp"),
    ("edit/block_editing.hpp", "cmd/command.hpp"),
    ("edit/external_references.cpp", "cmd/prompts/name_prompts.hpp"),
    ("edit/external_references.hpp", "cmd/command.hpp"),
    ("edit/layer_changes.cpp", "cmd/pick_request.hpp"),
    ("edit/layer_changes.cpp", "cmd/prompts/name_prompts.hpp"),
    ("edit/layer_changes.hpp", "cmd/dialogue.hpp"),
    ("edit/layer_state_file.cpp", "cmd/point_input.hpp"),
    ("edit/new_entities.hpp", "cmd/dialogue.hpp"),
    ("edit/property_changes.cpp", "cmd/prompts/name_prompts.hpp"),
    ("edit/property_changes.cpp", "cmd/prompts/property_prompts.hpp"),
    ("edit/property_changes.hpp", "cmd/dialogue.hpp"),
    ("edit/reference_editing.cpp", "cmd/prompts/file_names.hpp"),
    ("edit/reference_editing.hpp", "cmd/command.hpp"),
    ("edit/text_fields.cpp", "cmd/point_input.hpp"),
    ("engine/entities/block_reference.cpp", "engine/outline/spatial_sink.hpp"),
    ("engine/fonts/fonts.cpp", "engine/text/text_codes.hpp"),
    ("engine/inquiry/entity_report.cpp", "cmd/prompts/property_prompts.hpp"),
    ("engine/inquiry/record_properties.cpp", "cmd/point_input.hpp"),
    ("engine/model/drawing.cpp", "engine/entities/block_reference.hpp"),
    ("engine/model/drawing.cpp", "engine/entities/polyline.hpp"),
    ("engine/model/drawing.cpp", "engine/entities/text.hpp"),
    ("engine/model/drawing.cpp", "engine/entities/viewport.hpp"),
    ("engine/model/drawing.cpp", "engine/libraries/libraries.hpp"),
    ("engine/model/outline.cpp", "engine/entities/image.hpp"),
    ("engine/model/sysvar.cpp", "engine/sysvars/rows.hpp"),
    ("engine/model/units.cpp", "engine/text/text_codes.hpp"),
    ("engine/model/view_frame.cpp", "engine/outline/spatial_sink.hpp"),
    ("engine/symbols/external_reference.cpp", "engine/associativity/associativity.hpp"),
    ("io/dxf/groups/group_writer.cpp", "io/dxf/dxf_facts.hpp"),
    ("io/dxf/groups/text_decoder.hpp", "engine/model/name.hpp"),
    ("io/text_file.cpp", "engine/model/sysvar.hpp"),
    ("io/text_file.hpp", "engine/model/drawing.hpp"),
    ("kdraw/entities/texts.cpp", "kdraw/database/record_codec.hpp"),
    ("kdraw/groups/dxf_fields.cpp", "kdraw/database/database.hpp"),
    ("kdraw/groups/dxf_input.cpp", "kdraw/database/database.hpp"),
    ("kdraw/groups/dxf_output.cpp", "kdraw/database/database.hpp"),
    ("script/lisp/machine.cpp", "script/lisp/entities/entity_making.hpp"),
    ("strings/wildcards.cpp", "cmd/point_input.hpp"),
    ("strings/wildcards.cpp", "engine/model/name.hpp"),
    ("strings/wildcards.cpp", "engine/text/text_codes.hpp"),
}

LARGEST_ROOM = 40

FLOOR_OF = {room: number for number, line in enumerate(FLOORS) for room in line.split()}


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


def below(room, folder):
    return room == folder or room.startswith(folder + "/")


def main():
    root = pathlib.Path(sys.argv[1])
    failures = []
    upward = set()
    checked = 0
    stems = collections.defaultdict(set)
    for file in sorted(root.rglob("*")):
        if file.suffix not in (".cpp", ".hpp") or file.parent == root:
            continue
        name = file.relative_to(root).as_posix()
        own = name.rsplit("/", 1)[0]
        stems[own].add(file.stem)
        if own not in FLOOR_OF:
            failures.append(f"{name}: its folder has no floor")
            continue
        text = file.read_text(encoding="utf-8")
        if own != "strings":
            failures += [f"{name}:{n}: real numbers are read and printed by strings/numbers.hpp" for n in locale_faults(text)]
        for number, line in enumerate(text.splitlines(), 1):
            match = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
            if not match:
                continue
            target = match.group(1) if (root / match.group(1)).exists() else f"{own}/{match.group(1)}"
            if not (root / target).exists() or "/" not in target:
                continue
            checked += 1
            other = target.rsplit("/", 1)[0]
            if other == own or other not in FLOOR_OF:
                continue
            if FLOOR_OF[other] >= FLOOR_OF[own]:
                upward.add((name, target))
                if (name, target) not in STILL_UPWARD:
                    failures.append(f"{name}:{number}: {own} stands on or below the floor of {other}: {target}")
            for folder, banned in NEVER.items():
                if below(own, folder) and any(below(other, b) for b in banned):
                    failures.append(f"{name}:{number}: {folder} never includes {target}")
    failures += [f"STILL_UPWARD names what is mended: {pair}" for pair in sorted(STILL_UPWARD - upward)]
    failures += [f"{room}: {len(files)} files, more than {LARGEST_ROOM}" for room, files in sorted(stems.items()) if len(files) > LARGEST_ROOM]
    print("\n".join(failures) or f"{checked} includes, all downwards but {len(upward)}; {len(stems)} rooms")
    return 1 if failures or checked == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
