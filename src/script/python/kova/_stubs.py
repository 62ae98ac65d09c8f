"""Writes the type stubs of the package, for editors: {file name: text}."""

import inspect
import re

import _kova

_HEADER = "# Made by the program itself; see docs/python.md.\n"
_TYPES = '''from collections.abc import Callable, Iterable, Iterator, Mapping, MutableMapping, Sequence
from typing import Any, Dict, List, Optional, TypeVar

'''
_ENTITY_TYPES = '''from typing import Self

from .geom import BoundingBox2, Matrix4, Point, Vector2, Vector3

Color = str | int | tuple[int, int, int]
'''


def _doc(text, indent):
    """A docstring, or `...` when there is none."""
    text = inspect.cleandoc(text or "")
    if not text:
        return " ...\n"
    text = text.replace("\\", "\\\\").replace('"""', '\\"\\"\\"')
    if text.endswith('"'):
        text += " "
    body = ("\n" + indent).join(text.split("\n")).replace(indent + "\n", "\n")
    return f'\n{indent}"""{body}"""\n'


def _accepted(annotation):
    """What may be assigned where a value of this type is read."""
    return {"Vector2": "Point", "Vector3": "Point", "list[Vector2]": "Iterable[Point]",
            "list[Vector3]": "Iterable[Point]"}.get(annotation, annotation.replace("list[", "Sequence["))


def _property(name, annotation, doc, settable, indent="    "):
    text = f"{indent}@property\n{indent}def {name}(self) -> {annotation}:{_doc(doc, indent + '    ')}"
    if settable:
        text += f"{indent}@{name}.setter\n{indent}def {name}(self, value: {_accepted(annotation)}) -> None: ...\n"
    return text


def _described(doc):
    """Splits "type. text" as the native properties give it."""
    annotation, _, rest = (doc or "Any").partition(". ")
    kind = annotation.split(", ")[0] if not annotation.startswith("dict") else annotation
    return kind.rstrip("."), doc


def _native_method(name, doc, indent="    "):
    signature, _, rest = (doc or "").partition("\n")
    arguments = re.sub(r"^\w+\(", "(self, ", signature).replace("(self, )", "(self)")
    return f"{indent}def {name}{arguments}:{_doc(rest, indent + '    ')}"


def _native_class(cls, base, indent="    "):
    text = f"class {cls.__name__}{base}:{_doc(cls.__doc__, indent)}"
    for name, value in vars(cls).items():
        if name.startswith("__"):
            continue
        if inspect.isgetsetdescriptor(value):
            annotation, doc = _described(value.__doc__)
            settable = name not in ("kind", "handle", "in_drawing", "bounds", "name", "extents")
            text += _property(name, annotation, doc, settable)
        elif inspect.ismethoddescriptor(value):
            text += _native_method(name, value.__doc__)
    return text


def _kind_class(cls):
    text = f"class {cls.__name__}(Entity):{_doc(cls.__doc__, '    ')}"
    fields = [(n, v) for n, v in vars(cls).items() if isinstance(v, _kova.Field)]
    positional = cls.__doc__.partition("Positional arguments: ")[2].rstrip(".").split(", ")
    of = dict(fields)
    first = [f"{n}: {_accepted(of[n].annotation)} = ..." for n in positional if n in of]
    rest = [f"{n}: {_accepted(v.annotation)} = ..." for n, v in fields if n not in positional]
    common = [f"{n}: {_accepted(_described(v.__doc__)[0])} = ..." for n, v in vars(_kova.Entity).items()
              if inspect.isgetsetdescriptor(v) and n not in ("kind", "handle", "in_drawing", "bounds")]
    text += "    def __init__(self, " + ", ".join(first + ["*"] + rest + common) + ") -> None: ...\n"
    for name, field in fields:
        text += _property(name, field.annotation, field.__doc__, True)
    return text


def _ent():
    from kova import ent

    text = _HEADER + _TYPES + _ENTITY_TYPES + "\nclass EntityGoneError(RuntimeError): ...\n\n"
    text += _native_class(_kova.Entity, "")
    for cls in ent.kinds():
        text += "\n" + _kind_class(cls)
    return text + "\ndef kinds() -> List[type[Entity]]:" + _doc(ent.kinds.__doc__, "    ")


_GEOM_ARGUMENTS = {"points": "Iterable[Point]", "bulges": "Iterable[float]", "radians": "float", "factor": "float"}


def _pybind_signature(doc, method):
    """The signature in the first line of a pybind11 docstring, with the package's own words for types."""
    line = (doc or "").split("\n")[0]
    match = re.match(r"\w+\((.*)\) -> (.*)$", line)
    if not match:
        return None
    arguments = []
    for i, argument in enumerate(re.split(r", (?=\w+: )", re.sub(r"<[^>]*>", "...", match[1])) if match[1] else []):
        name, _, kind = argument.partition(": ")
        kind, _, default = kind.partition(" = ")
        if i == 0 and method:
            arguments.append("self")
            continue
        kind = re.sub(r"\b_kova\.", "", kind)
        if kind == "handle":
            kind = _GEOM_ARGUMENTS.get(name, "Point")
        kind = kind.replace("Tuple", "tuple")
        arguments.append(f"{name}: {kind}" + (" = ..." if default else ""))
    result = re.sub(r"\b_kova\.", "", match[2])
    return f"({', '.join(arguments)}) -> {'Any' if result == 'object' else 'list[Vector2]' if result == 'list' else result}"


def _geom_class(cls):
    text = f"class {cls.__name__}:{_doc(cls.__doc__, '    ')}"
    for name, value in vars(cls).items():
        if isinstance(value, property):
            annotation = "Vector2" if cls.__name__ == "BoundingBox2" else "float"
            text += _property(name, annotation, value.__doc__, False)
        elif name == "__init__":
            for line in value.__doc__.split("\n"):
                signature = _pybind_signature(line.partition(". ")[2] if line[:1].isdigit() else line, True)
                if signature:
                    several = "Overloaded" in value.__doc__
                    text += ("    @overload\n" if several else "") + f"    def __init__{signature}: ...\n"
        elif name in ("__add__", "__radd__", "__sub__", "__rsub__"):
            text += f"    def {name}(self, other: Point) -> {cls.__name__}: ...\n"
        elif name in ("__mul__", "__rmul__", "__truediv__") and cls.__name__ != "Matrix4":
            text += f"    def {name}(self, factor: float) -> {cls.__name__}: ...\n"
        elif name == "__iter__":
            text += "    def __iter__(self) -> Iterator[float]: ...\n"
        elif name in ("__eq__", "__hash__", "__reduce__", "__repr__") or name.startswith("_pybind"):
            continue
        elif isinstance(value, staticmethod) or callable(value):
            static = isinstance(value, staticmethod)
            doc = getattr(cls, name).__doc__
            signature = _pybind_signature(doc, not static)
            if signature:
                rest = doc.partition("\n")[2]
                text += ("    @staticmethod\n" if static else "") + f"    def {name}{signature}:{_doc(rest, '        ')}"
    return text


def _python_function(name, function, indent="", method=False):
    signature = re.sub(r"(: |-> )'([^']*)'", r"\1\2", str(inspect.signature(function)).replace("typing.", ""))
    signature = re.sub(r"\bkova\.\w+\.", "", signature)
    return f"{indent}def {name}{signature}:{_doc(function.__doc__, indent + '    ')}"


def _geom():
    from kova import geom

    text = _HEADER + _TYPES.replace("Any,", "Any, overload,")
    text += "Point = \"Vector2 | Vector3 | Sequence[float]\"\n"
    text = text.replace('Point = "Vector2 | Vector3 | Sequence[float]"', "from typing import Union\n\nPoint = Union[\"Vector2\", \"Vector3\", Sequence[float]]")
    for name in geom.__all__:
        value = getattr(geom, name)
        if inspect.isclass(value):
            text += "\n" + _geom_class(value)
        elif inspect.isfunction(value):
            text += "\n" + _python_function(name, value)
        else:
            signature = _pybind_signature(value.__doc__, False).replace("-> Any", "-> Vector2 | None")
            text += f"\ndef {name}{signature}:{_doc(value.__doc__.partition(chr(10))[2], '    ')}"
    return text


def _python_class(cls):
    bases = [b.__name__ for b in cls.__bases__ if b is not object]
    base = f"({', '.join(bases)})" if bases else ""
    text = f"class {cls.__name__}{base}:{_doc(cls.__doc__, '    ')}"
    body = ""
    for name, value in vars(cls).items():
        if name.startswith("_") and name not in ("__init__", "__getitem__", "__iter__", "__len__", "__enter__", "__exit__",
                                                 "__getattr__", "__setitem__"):
            continue
        if isinstance(value, property):
            annotation = value.fget.__annotations__.get("return")
            annotation = annotation if annotation is not None else (value.__doc__ or "Any").partition(".")[0]
            if not isinstance(annotation, str):
                annotation = inspect.formatannotation(annotation).replace("typing.", "")
            body += _property(name, annotation.strip('"'), value.__doc__, value.fset is not None)
        elif inspect.isfunction(value) and name != "<lambda>":
            body += _python_function(name, value, "    ", True)
    return text + body


def _doc_module():
    from kova import _tables, doc

    text = _HEADER + _TYPES + "from .ent import Entity, EntityGoneError\nfrom .geom import BoundingBox2, Point\n\n"
    text += "E = TypeVar(\"E\", bound=Entity)\nKindLike = str | type[Entity]\n\n"
    text += _native_class(_kova.SpaceBase, "")
    text += "    def __len__(self) -> int: ...\n    def __iter__(self) -> Iterator[Entity]: ...\n"
    text += "    def __contains__(self, entity: object) -> bool: ...\n    def __getitem__(self, index: int | slice) -> Any: ...\n"
    for name in ("Record", "Table", "LinetypeTable", "Space", "_Container", "Block", "Layout", "Blocks", "Layouts", "Variables"):
        text += "\n" + _python_class(getattr(_tables, name))
    for name in ("Drawing", "Document", "Transaction"):
        text += "\n" + _python_class(getattr(doc, name))
    for name in ("current", "transaction", "open", "new", "save", "undo", "redo"):
        text += "\n" + _python_function(name, getattr(doc, name))
    return text


def _cmd():
    from kova import cmd

    text = _HEADER + _TYPES + "class CommandError(RuntimeError): ...\n"
    for name in cmd.__all__:
        if inspect.isfunction(getattr(cmd, name)):
            text += "\n" + _python_function(name, getattr(cmd, name))
    return text


def stubs():
    return {"__init__.pyi": _HEADER + "from . import cmd as cmd, doc as doc, ent as ent, geom as geom\n",
            "ent.pyi": _ent(), "geom.pyi": _geom(), "doc.pyi": _doc_module(), "cmd.pyi": _cmd()}


def write(folder):
    import os

    os.makedirs(folder, exist_ok=True)
    for name, text in stubs().items():
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(text)
