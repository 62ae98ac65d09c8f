#!/usr/bin/env python3
"""Edits DXF files as another program does: edit.py keep|change FROM TO

"keep" loads and saves; "change" moves hatches and dimensions by (100, 50) and sets header variables. The exit status is
77 when ezdxf is not installed.
"""
import sys

try:
    import ezdxf
except ImportError:
    print("ezdxf is not installed (Debian: python3-ezdxf)")
    sys.exit(77)

how, source, target = sys.argv[1:]
document = ezdxf.readfile(source)
if how == "change":
    document.header["$LTSCALE"] = 7.5
    document.header["$INSUNITS"] = 6
    document.header["$PDMODE"] = 34
    document.header["$DIMSCALE"] = 12.0
    for entity in document.modelspace().query("HATCH DIMENSION"):
        entity.translate(100, 50, 0)
document.saveas(target)
