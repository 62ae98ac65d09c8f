"""The open drawing of kovacad-cli.

kova.doc   the document: current(), transaction(), files, undo, tables
kova.ent   a class for each kind of entity
kova.geom  points, boxes, matrices, intersections, areas
kova.cmd   command lines, and commands written in Python
"""

from . import cmd, doc, ent, geom

__all__ = ["cmd", "doc", "ent", "geom"]
