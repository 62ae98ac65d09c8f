# Made by the program itself; see docs/python.md.
from . import cmd as cmd, doc as doc, ent as ent, geom as geom
