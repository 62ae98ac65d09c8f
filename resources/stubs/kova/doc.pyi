# Made by the program itself; see docs/python.md.
from collections.abc import Callable, Iterable, Iterator, Mapping, MutableMapping, Sequence
from typing import Any, Dict, List, Optional, TypeVar

from .ent import Entity, EntityGoneError
from .geom import BoundingBox2, Point

E = TypeVar("E", bound=Entity)
KindLike = str | type[Entity]

class SpaceBase:
    """The entities of model space, a layout or a block, in drawing order."""
    def add(self, entity: E) -> E:
        """Puts a new entity at the end of the drawing order and gives it back. What was not given to it (layer, colour, linetype ...) it takes from the drawing's current settings."""
    def extend(self, entities: Iterable[Entity]) -> int:
        """Adds all, as one change; gives their number."""
    def filter(self, kind: KindLike | Sequence[KindLike] | None = None, layer: str | None = None) -> list[Entity]:
        """The entities of a kind (a class, or any of its names such as "INSERT") and on a layer, in drawing order."""
    def in_box(self, box: BoundingBox2) -> list[Entity]:
        """The entities whose bounds meet the box, in drawing order."""
    def nearest(self, point: Point, tolerance: float = 1e12) -> Entity | None:
        """The entity nearest to the point."""
    @property
    def name(self) -> str:
        """str. "Model", or the name of the layout or block."""
    @property
    def extents(self) -> BoundingBox2:
        """BoundingBox2. What is visible, drawing units."""
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[Entity]: ...
    def __contains__(self, entity: object) -> bool: ...
    def __getitem__(self, index: int | slice) -> Any: ...

class Record:
    """A record of a table. Its fields are attributes; to set one changes the drawing."""
    def __init__(self, table: Table, name: str): ...
    def fields(self) -> dict[str, Any]:
        """All fields as a dict."""
    def set(self, **fields: Any) -> None:
        """Sets several fields as one change: all of them, or none."""
    @property
    def name(self) -> str: ...
    @name.setter
    def name(self, value: str) -> None: ...
    @property
    def color_index(self) -> int:
        """256 ByLayer, 0 ByBlock, 1..255."""
    def __getattr__(self, key: str) -> Any: ...

class Table(Mapping):
    """A symbol table: a mapping from names, whose case does not count, to records."""
    def __init__(self, kind: str): ...
    def __getitem__(self, name: str) -> Record: ...
    def __iter__(self) -> Iterator[str]: ...
    def __len__(self) -> int: ...
    def add(self, name: str, **fields: Any) -> Record:
        """Makes a record; one of that name must not be there yet."""
    def ensure(self, name: str, **fields: Any) -> Record:
        """The record of that name, made with these fields when there is none."""
    def remove(self, name: str) -> None:
        """Deletes a record; one that is current or in use is refused."""
    def rename(self, old: str, new: str) -> None:
        """Renames a record and everything that refers to it."""
    @property
    def current(self) -> Optional[str]:
        """The name of the record that new entities take; None for tables that have no current one."""
    @current.setter
    def current(self, value: Optional[str]) -> None: ...

class LinetypeTable(Table):
    """The linetypes of the drawing; `load` brings one of the program's library."""
    def load(self, name: str) -> Record: ...

class Space(SpaceBase):
    """The entities of model space, a layout or a block, in drawing order: len(), indexing, slices, iteration, `in`."""
    def clear(self) -> int:
        """Deletes all entities; gives their number."""

class _Container(Space):
    """A space with fields of its own."""
    def fields(self) -> dict[str, Any]:
        """All fields as a dict."""
    def set(self, **fields: Any) -> None:
        """Sets several fields as one change: all of them, or none."""
    def __getattr__(self, key: str) -> Any: ...

class Block(_Container):
    """A block definition: its entities, `base`, `description` ..."""

class Layout(_Container):
    """A paper-space layout: its entities, and the fields of its page setup (lengths in millimetres)."""

class Blocks(Mapping):
    """The block definitions by name."""
    def __getitem__(self, name: str) -> Block: ...
    def __iter__(self) -> Iterator[str]: ...
    def __len__(self) -> int: ...
    def add(self, name: str, entities=(), base=(0, 0), description: str = '') -> Block:
        """Defines a block, with new entities as its contents."""
    def remove(self, name: str) -> None:
        """Deletes a definition that nothing refers to."""
    def rename(self, old: str, new: str) -> None: ...

class Layouts(Mapping):
    """The paper-space layouts: by name, or by position."""
    def __getitem__(self, name: str | int) -> Layout: ...
    def __iter__(self) -> Iterator[str]: ...
    def __len__(self) -> int: ...
    def add(self, name: str) -> Layout: ...
    def remove(self, name: str) -> None: ...
    def rename(self, old: str, new: str) -> None: ...

class Variables(MutableMapping):
    """The system variables: drawing.variables["LTSCALE"] = 2."""
    def __getitem__(self, name: str) -> Any: ...
    def __setitem__(self, name: str, value: Any) -> None: ...
    def __iter__(self) -> Iterator[str]: ...
    def __len__(self) -> int: ...
    def description(self, name: str) -> Optional[str]:
        """What the variable is for."""

class Drawing:
    """The drawing database: tables, blocks, layouts, system variables."""
    @property
    def layers(self) -> Table:
        """Table. Layers by name."""
    @property
    def linetypes(self) -> LinetypeTable:
        """LinetypeTable. Linetypes by name."""
    @property
    def text_styles(self) -> Table:
        """Table. Text styles by name."""
    @property
    def dim_styles(self) -> Table:
        """Table. Dimension styles by name."""
    @property
    def mleader_styles(self) -> Table:
        """Table. Multileader styles by name."""
    @property
    def table_styles(self) -> Table:
        """Table. Table styles by name."""
    @property
    def groups(self) -> Table:
        """Table. Groups by name."""
    @property
    def views(self) -> Table:
        """Table. Named views."""
    @property
    def ucs(self) -> Table:
        """Table. Named user coordinate systems."""
    @property
    def annotation_scales(self) -> Table:
        """Table. Annotation scales by name."""
    @property
    def page_setups(self) -> Table:
        """Table. Named page setups."""
    @property
    def hatch_patterns(self) -> Table:
        """Table. Hatch patterns of the drawing."""
    @property
    def blocks(self) -> Blocks:
        """Blocks. Block definitions by name."""
    @property
    def layouts(self) -> Layouts:
        """Layouts. Paper-space layouts."""
    @property
    def variables(self) -> Variables:
        """Variables. System variables by name."""
    def entity(self, handle: str | int) -> Optional[Entity]:
        """The entity with that handle (hexadecimal text, or a number); None when there is none."""

class Document:
    """The open document. There is one; a drawing that is opened takes the place of the one before."""
    @property
    def drawing(self) -> Drawing:
        """Drawing. Its tables, blocks, layouts and variables."""
    @property
    def model_space(self) -> Space:
        """Space. The entities of model space."""
    @property
    def current_space(self) -> Space:
        """Space. Model space, or the layout that is current."""
    @property
    def layouts(self) -> Layouts:
        """Layouts. Paper-space layouts, each a space."""
    @property
    def blocks(self) -> Blocks:
        """Blocks. Block definitions, each a space."""
    @property
    def path(self) -> str:
        """str. The drawing's file; empty while it has none."""
    @property
    def is_modified(self) -> bool:
        """bool. There are unsaved changes."""
    @property
    def undo_label(self) -> str:
        """str. What undo() would take back; empty: nothing."""
    @property
    def redo_label(self) -> str:
        """str. What redo() would do again; empty: nothing."""
    @property
    def selection(self) -> List[Entity]:
        """The selected entities, in the order of their selection. May be set."""
    @selection.setter
    def selection(self, value: List[Entity]) -> None: ...
    def transaction(self, name: str = 'Python') -> Transaction:
        """See kova.doc.transaction."""
    def save(self, path: Any = '') -> None:
        """Saves by the path's extension (.dwg, .dxf, .kvcad), or to the drawing's own file."""
    def undo(self) -> Optional[str]:
        """Takes the last undo group back; gives its name, or None when there is nothing to undo."""
    def redo(self) -> Optional[str]:
        """Does the group again that was undone last; gives its name, or None."""

class Transaction:
    """A context manager: commits one undo group, or takes everything back when the block raises."""
    def __init__(self, name: str = 'Python'): ...
    def __enter__(self) -> Transaction: ...
    def __exit__(self, kind: Any, error: Any, trace: Any) -> bool: ...
    def rollback(self) -> None:
        """Takes everything back and ends the transaction; the rest of the block changes the drawing outside it."""

def current() -> Document:
    """The open document."""

def transaction(name: str = 'Python') -> Transaction:
    """`with transaction("Walls"): ...` makes one undo group, which is taken back when the block raises.

    Transactions may be nested; the outermost name is the group's."""

def open(path: Any) -> Document:
    """Opens a .dwg, .dxf or .kvcad file in the place of the present drawing. OSError when it cannot be read."""

def new(template: str = '') -> Document:
    """Starts a new drawing: "metric", "metric-a4", "imperial", or a template file's path."""

def save(path: Any = '') -> None:
    """Saves by the path's extension (.dwg, .dxf, .kvcad), or to the drawing's own file. OSError when that fails."""

def undo() -> Optional[str]:
    """Takes the last undo group back; gives its name, or None when there is nothing to undo."""

def redo() -> Optional[str]:
    """Does the group again that was undone last; gives its name, or None."""
