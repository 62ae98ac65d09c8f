"""Symbol tables, blocks, layouts and system variables as mappings."""

from collections.abc import Mapping as _Mapping, MutableMapping as _MutableMapping
from typing import Any, Iterator, Optional

import _kova

_UNSET = object()


class Record:
    """A record of a table. Its fields are attributes; to set one changes the drawing."""

    __slots__ = ("_table", "_name")

    def __init__(self, table: "Table", name: str):
        object.__setattr__(self, "_table", table)
        object.__setattr__(self, "_name", name)

    def _fields(self) -> dict:
        fields = _kova.record(self._table._kind, self._name)
        if fields is None:
            raise KeyError(f"there is no record named {self._name!r} any more")
        return fields

    def fields(self) -> "dict[str, Any]":
        """All fields as a dict."""
        return self._fields()

    def set(self, **fields: Any) -> None:
        """Sets several fields as one change: all of them, or none."""
        self._fields()
        _kova.set_record(self._table._kind, self._name, self._table._prepare(fields))

    @property
    def name(self) -> str:
        return self._fields()["name"]

    @name.setter
    def name(self, name: str) -> None:
        _kova.rename_record(self._table._kind, self._name, name)
        object.__setattr__(self, "_name", name)

    @property
    def color_index(self) -> int:
        """256 ByLayer, 0 ByBlock, 1..255."""
        color = _kova.Point()
        color.color = self.color
        return color.color_index

    def __getattr__(self, key: str) -> Any:
        fields = self._fields()
        if key in fields:
            return fields[key]
        raise AttributeError(f"{self._table._kind} have no field {key!r}")

    def __setattr__(self, key: str, value: Any) -> None:
        if key == "name":
            return Record.name.fset(self, value)
        if key not in self._fields() and key not in self._table._fresh() and key != "color_index":
            raise AttributeError(f"{self._table._kind} have no field {key!r}")
        self.set(**{key: value})

    def __dir__(self):
        return sorted({*super().__dir__(), *self._fields()})

    def __eq__(self, other):
        return isinstance(other, Record) and self._table == other._table and self._name.lower() == other._name.lower()

    def __hash__(self):
        return hash((self._table._kind, self._name.lower()))

    def __repr__(self):
        return f"<{self._table._kind}: {self._name}>"


class Table(_Mapping):
    """A symbol table: a mapping from names, whose case does not count, to records."""

    __slots__ = ("_kind",)

    def __init__(self, kind: str):
        self._kind = kind

    def _fresh(self) -> dict:
        return _kova.fresh_record(self._kind)

    @staticmethod
    def _prepare(fields: dict) -> dict:
        if "color_index" in fields:
            fields = dict(fields)
            index = fields.pop("color_index")
            if not isinstance(index, int):
                raise TypeError("color_index must be a whole number")
            fields["color"] = index
        return fields

    def __getitem__(self, name: str) -> Record:
        if not isinstance(name, str) or _kova.record(self._kind, name) is None:
            raise KeyError(name)
        return Record(self, name)

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and _kova.record(self._kind, name) is not None

    def __iter__(self) -> Iterator[str]:
        return iter(_kova.record_names(self._kind))

    def __len__(self) -> int:
        return len(_kova.record_names(self._kind))

    def add(self, name: str, **fields: Any) -> Record:
        """Makes a record; one of that name must not be there yet."""
        if name in self:
            raise ValueError(f"there is a record named {name!r} already")
        _kova.set_record(self._kind, name, self._prepare(fields))
        return Record(self, name)

    def ensure(self, name: str, **fields: Any) -> Record:
        """The record of that name, made with these fields when there is none."""
        return self[name] if name in self else self.add(name, **fields)

    def remove(self, name: str) -> None:
        """Deletes a record; one that is current or in use is refused."""
        _kova.remove_record(self._kind, name)

    __delitem__ = remove

    def rename(self, old: str, new: str) -> None:
        """Renames a record and everything that refers to it."""
        _kova.rename_record(self._kind, old, new)

    @property
    def current(self) -> Optional[str]:
        """The name of the record that new entities take; None for tables that have no current one."""
        return _kova.current_record(self._kind)

    @current.setter
    def current(self, name: "str | Record") -> None:
        _kova.set_current_record(self._kind, name.name if isinstance(name, Record) else name)

    def __eq__(self, other):
        return isinstance(other, Table) and self._kind == other._kind

    def __hash__(self):
        return hash(self._kind)

    def __repr__(self):
        return f"<{self._kind}: {', '.join(self)}>"


class LinetypeTable(Table):
    """The linetypes of the drawing; `load` brings one of the program's library."""

    __slots__ = ()

    def load(self, name: str) -> Record:
        if not _kova.load_linetype(name):
            raise KeyError(f"there is no linetype named {name!r}")
        return self[name]


class Space(_kova.SpaceBase):
    """The entities of model space, a layout or a block, in drawing order: len(), indexing, slices, iteration, `in`."""

    __slots__ = ("_key",)

    def __new__(cls, which, name=""):
        space = super().__new__(cls, which, name)
        space._key = (which, name.lower())
        return space

    def clear(self) -> int:
        """Deletes all entities; gives their number."""
        entities = self[:]
        for entity in entities:
            entity.delete()
        return len(entities)

    def __eq__(self, other):
        return isinstance(other, Space) and self._key == other._key

    def __hash__(self):
        return hash(self._key)

    def __repr__(self):
        return f"<{self.name}: {len(self)} entities>"


class _Container(Space):
    """A space with fields of its own."""

    __slots__ = ()
    _get = _set = _rename = None

    def fields(self) -> "dict[str, Any]":
        """All fields as a dict."""
        return type(self)._get(self.name)

    def set(self, **fields: Any) -> None:
        """Sets several fields as one change: all of them, or none."""
        type(self)._set(self.name, fields)

    def __getattr__(self, key: str) -> Any:
        if not key.startswith("_"):
            fields = self.fields()
            if key in fields:
                return fields[key]
        raise AttributeError(f"{type(self).__name__} has no field {key!r}")

    def __setattr__(self, key: str, value: Any) -> None:
        if key.startswith("_"):
            return object.__setattr__(self, key, value)
        if key == "name" or key not in self.fields():
            raise AttributeError(f"{type(self).__name__} has no field {key!r} that can be set")
        self.set(**{key: value})


class Block(_Container):
    """A block definition: its entities, `base`, `description` ..."""

    __slots__ = ()
    _get = staticmethod(_kova.block)
    _set = staticmethod(_kova.set_block)


class Layout(_Container):
    """A paper-space layout: its entities, and the fields of its page setup (lengths in millimetres)."""

    __slots__ = ()
    _get = staticmethod(_kova.layout)
    _set = staticmethod(_kova.set_layout)


class Blocks(_Mapping):
    """The block definitions by name."""

    __slots__ = ()

    def __getitem__(self, name: str) -> Block:
        if name not in self:
            raise KeyError(name)
        return Block("block", name)

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and name.lower() in (n.lower() for n in _kova.block_names())

    def __iter__(self) -> Iterator[str]:
        return iter(_kova.block_names())

    def __len__(self) -> int:
        return len(_kova.block_names())

    def add(self, name: str, entities=(), base=(0, 0), description: str = "") -> Block:
        """Defines a block, with new entities as its contents."""
        _kova.add_block(name)
        block = Block("block", name)
        block.set(base=base, description=description)
        block.extend(entities)
        return block

    def remove(self, name: str) -> None:
        """Deletes a definition that nothing refers to."""
        _kova.remove_block(name)

    __delitem__ = remove

    def rename(self, old: str, new: str) -> None:
        _kova.rename_block(old, new)

    def __repr__(self):
        return f"<blocks: {', '.join(self)}>"


class Layouts(_Mapping):
    """The paper-space layouts: by name, or by position."""

    __slots__ = ()

    def __getitem__(self, name: "str | int") -> Layout:
        if isinstance(name, int):
            return Layout("layout", _kova.layout_names()[name])
        if name not in self:
            raise KeyError(name)
        return Layout("layout", name)

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and name.lower() in (n.lower() for n in _kova.layout_names())

    def __iter__(self) -> Iterator[str]:
        return iter(_kova.layout_names())

    def __len__(self) -> int:
        return len(_kova.layout_names())

    def add(self, name: str) -> Layout:
        _kova.add_layout(name)
        return Layout("layout", name)

    def remove(self, name: str) -> None:
        _kova.remove_layout(name)

    __delitem__ = remove

    def rename(self, old: str, new: str) -> None:
        _kova.rename_layout(old, new)

    def __repr__(self):
        return f"<layouts: {', '.join(self)}>"


class Variables(_MutableMapping):
    """The system variables: drawing.variables["LTSCALE"] = 2."""

    __slots__ = ()

    def __getitem__(self, name: str) -> Any:
        return _kova.get_variable(name)

    def __setitem__(self, name: str, value: Any) -> None:
        _kova.set_variable(name, value)

    def __delitem__(self, name: str) -> None:
        raise TypeError("system variables cannot be deleted")

    def __iter__(self) -> Iterator[str]:
        return iter(_kova.variable_names())

    def __len__(self) -> int:
        return len(_kova.variable_names())

    def description(self, name: str) -> Optional[str]:
        """What the variable is for."""
        return _kova.variable_description(name)

    def __repr__(self):
        return f"<{len(self)} system variables>"
