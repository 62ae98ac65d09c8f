"""The document: the open drawing, its files, its undo history and transactions.

Changes inside `with transaction("name"):` are one undo group, and are taken back when the block raises. What a piece of
code changes outside transactions is one undo group, too.
"""

from typing import Any, List, Optional

import _kova
from _kova import EntityGoneError

from ._tables import Block, Blocks, Layout, Layouts, LinetypeTable, Record, Space, Table, Variables

# Without open, which would hide Python's own.
__all__ = [
    "Block", "Blocks", "Document", "Drawing", "EntityGoneError", "Layout", "Layouts", "LinetypeTable", "Record",
    "Space", "Table", "Transaction", "Variables", "current", "new", "redo", "save", "transaction", "undo"]


class Drawing:
    """The drawing database: tables, blocks, layouts, system variables."""

    __slots__ = ()

    layers = property(lambda self: Table("layers"), doc="Table. Layers by name.")
    linetypes = property(lambda self: LinetypeTable("linetypes"), doc="LinetypeTable. Linetypes by name.")
    text_styles = property(lambda self: Table("text_styles"), doc="Table. Text styles by name.")
    dim_styles = property(lambda self: Table("dim_styles"), doc="Table. Dimension styles by name.")
    mleader_styles = property(lambda self: Table("mleader_styles"), doc="Table. Multileader styles by name.")
    table_styles = property(lambda self: Table("table_styles"), doc="Table. Table styles by name.")
    groups = property(lambda self: Table("groups"), doc="Table. Groups by name.")
    views = property(lambda self: Table("views"), doc="Table. Named views.")
    ucs = property(lambda self: Table("ucs"), doc="Table. Named user coordinate systems.")
    annotation_scales = property(lambda self: Table("annotation_scales"), doc="Table. Annotation scales by name.")
    page_setups = property(lambda self: Table("page_setups"), doc="Table. Named page setups.")
    hatch_patterns = property(lambda self: Table("hatch_patterns"), doc="Table. Hatch patterns of the drawing.")
    blocks = property(lambda self: Blocks(), doc="Blocks. Block definitions by name.")
    layouts = property(lambda self: Layouts(), doc="Layouts. Paper-space layouts.")
    variables = property(lambda self: Variables(), doc="Variables. System variables by name.")

    def entity(self, handle: "str | int") -> "Optional[Entity]":
        """The entity with that handle (hexadecimal text, or a number); None when there is none."""
        return _kova.by_handle(handle)

    def __eq__(self, other):
        return isinstance(other, Drawing)

    def __hash__(self):
        return 1

    def __repr__(self):
        return f"<Drawing {_kova.path() or 'without a file'}>"


class Document:
    """The open document. There is one; a drawing that is opened takes the place of the one before."""

    __slots__ = ()

    drawing = property(lambda self: Drawing(), doc="Drawing. Its tables, blocks, layouts and variables.")
    model_space = property(lambda self: Space("model"), doc="Space. The entities of model space.")
    current_space = property(lambda self: Space("current"), doc="Space. Model space, or the layout that is current.")
    layouts = property(lambda self: Layouts(), doc="Layouts. Paper-space layouts, each a space.")
    blocks = property(lambda self: Blocks(), doc="Blocks. Block definitions, each a space.")
    path = property(lambda self: _kova.path(), doc="str. The drawing's file; empty while it has none.")
    is_modified = property(lambda self: _kova.is_modified(), doc="bool. There are unsaved changes.")
    undo_label = property(lambda self: _kova.undo_label(), doc="str. What undo() would take back; empty: nothing.")
    redo_label = property(lambda self: _kova.redo_label(), doc="str. What redo() would do again; empty: nothing.")

    @property
    def selection(self) -> "List[Entity]":
        """The selected entities, in the order of their selection. May be set."""
        return _kova.selection()

    @selection.setter
    def selection(self, entities: "Iterable[Entity]") -> None:
        _kova.select(entities)

    def transaction(self, name: str = "Python") -> "Transaction":
        """See kova.doc.transaction."""
        return Transaction(name)

    def save(self, path: Any = "") -> None:
        """Saves by the path's extension (.dwg, .dxf, .kvcad), or to the drawing's own file."""
        save(path)

    def undo(self) -> Optional[str]:
        """Takes the last undo group back; gives its name, or None when there is nothing to undo."""
        return _kova.undo()

    def redo(self) -> Optional[str]:
        """Does the group again that was undone last; gives its name, or None."""
        return _kova.redo()

    def __eq__(self, other):
        return isinstance(other, Document)

    def __hash__(self):
        return 0

    def __repr__(self):
        return f"<Document {_kova.path() or 'without a file'}>"


class Transaction:
    """A context manager: commits one undo group, or takes everything back when the block raises."""

    __slots__ = ("name", "_number")

    def __init__(self, name: str = "Python"):
        if not isinstance(name, str):
            raise TypeError("a transaction's name must be a text")
        self.name = name
        self._number = 0

    def __enter__(self) -> "Transaction":
        if self._number:
            raise RuntimeError("this transaction is open already")
        self._number = _kova.begin_transaction(self.name)
        return self

    def __exit__(self, kind: Any, error: Any, trace: Any) -> bool:
        self._end(kind is None)
        return False

    def rollback(self) -> None:
        """Takes everything back and ends the transaction; the rest of the block changes the drawing outside it."""
        self._end(False)

    def _end(self, commit):
        number, self._number = self._number, 0
        if number:
            _kova.end_transaction(number, commit)


_document = Document()


def current() -> Document:
    """The open document."""
    return _document


def transaction(name: str = "Python") -> Transaction:
    """`with transaction("Walls"): ...` makes one undo group, which is taken back when the block raises.

    Transactions may be nested; the outermost name is the group's.
    """
    return Transaction(name)


def open(path: Any) -> Document:
    """Opens a .dwg, .dxf or .kvcad file in the place of the present drawing. OSError when it cannot be read."""
    _kova.open_file(_text(path))
    return _document


def new(template: str = "") -> Document:
    """Starts a new drawing: "metric", "metric-a4", "imperial", or a template file's path."""
    _kova.new_drawing(template)
    return _document


def save(path: Any = "") -> None:
    """Saves by the path's extension (.dwg, .dxf, .kvcad), or to the drawing's own file. OSError when that fails."""
    _kova.save_file(_text(path) if path else "")


def undo() -> Optional[str]:
    """Takes the last undo group back; gives its name, or None when there is nothing to undo."""
    return _kova.undo()


def redo() -> Optional[str]:
    """Does the group again that was undone last; gives its name, or None."""
    return _kova.redo()


def _text(path):
    import os

    return os.fsdecode(os.fspath(path))
