#!/usr/bin/env python3
"""Audits DXF files with ezdxf: audit.py FILE...

Prints every error that a file has and everything that had to be mended; the exit status is 0 when there is nothing of
the kind, 1 when there is, 77 when ezdxf is not installed.
"""
import sys

try:
    import ezdxf
    from ezdxf import DXFError
    from ezdxf.lldxf.const import DXFStructureError
except ImportError:
    print("ezdxf is not installed (Debian: python3-ezdxf)")
    sys.exit(77)


def entity_counts(document):
    counts = {}
    for entity in document.modelspace():
        counts[entity.dxftype()] = counts.get(entity.dxftype(), 0) + 1
    return " ".join(f"{kind}={count}" for kind, count in sorted(counts.items()))


def audit(path):
    """The number of complaints about a file."""
    try:
        document = ezdxf.readfile(path)
    except (DXFError, DXFStructureError, IOError, ValueError) as problem:
        print(f"{path}: cannot be read: {problem}")
        return 1
    auditor = document.audit()
    for entry in auditor.errors:
        print(f"{path}: error {entry.code}: {entry.message}")
    for entry in auditor.fixes:
        print(f"{path}: fixed {entry.code}: {entry.message}")
    if document.dxfversion != "AC1027":
        print(f"{path}: version {document.dxfversion}")
        return 1
    print(f"{path}: {entity_counts(document)}")
    return len(auditor.errors) + len(auditor.fixes)


def main():
    complaints = sum(audit(path) for path in sys.argv[1:])
    print(f"{complaints} complaint(s)")
    sys.exit(1 if complaints else 0)


main()
