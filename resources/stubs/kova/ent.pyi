# Made by the program itself; see docs/python.md.
from collections.abc import Callable, Iterable, Iterator, Mapping, MutableMapping, Sequence
from typing import Any, Dict, List, Optional, TypeVar

from typing import Self

from .geom import BoundingBox2, Matrix4, Point, Vector2, Vector3

Color = str | int | tuple[int, int, int]

class EntityGoneError(RuntimeError): ...

class Entity:
    """An entity: a new one that is in no drawing yet, or one of the drawing.

    Two objects are equal when they stand for the same entity."""
    def transform(self, matrix: Matrix4) -> None:
        """Applies the matrix. A circle or arc under unequal scales becomes an Ellipse."""
    def move(self, by: Point) -> None:
        """Moves by a vector, drawing units."""
    def rotate(self, angle: float, center: Point = (0, 0)) -> None:
        """Turns by an angle in radians, counter-clockwise."""
    def scale(self, factor: float, center: Point = (0, 0)) -> None: ...
    def mirror(self, a: Point, b: Point) -> None:
        """Replaces the entity by its mirror image in the line through a and b."""
    def copy(self) -> Self:
        """A new entity with the same properties, in no drawing yet."""
    def delete(self) -> None:
        """Takes the entity out of the drawing."""
    def nearest_point(self, point: Point) -> Vector2: ...
    def distance_to(self, point: Point) -> float: ...
    def grip_points(self) -> list[Vector2]:
        """The points that a user can drag."""
    def move_grip(self, index: int, to: Point) -> None: ...
    def set(self, **properties: Any) -> None:
        """Sets several properties as one change: all of them, or none."""
    def fields(self) -> dict[str, Any]:
        """The kind's own fields as a dict."""
    @property
    def kind(self) -> str:
        """str. The kind's display name: "Line", "Block Reference" ..."""
    @property
    def handle(self) -> str | None:
        """str | None. The handle in hexadecimal; None while the entity is in no drawing."""
    @property
    def in_drawing(self) -> bool:
        """bool. True while the entity stands in the drawing."""
    @property
    def layer_name(self) -> str:
        """str. The layer; one that is missing is made."""
    @layer_name.setter
    def layer_name(self, value: str) -> None: ...
    @property
    def color(self) -> Color:
        """Color. "ByLayer", "ByBlock", an index 1..255 or (red, green, blue); names such as "red" are accepted."""
    @color.setter
    def color(self, value: Color) -> None: ...
    @property
    def color_index(self) -> int:
        """int. 256 ByLayer, 0 ByBlock, 1..255."""
    @color_index.setter
    def color_index(self, value: int) -> None: ...
    @property
    def linetype_name(self) -> str:
        """str. The linetype, loaded from the program's library when the drawing does not have it."""
    @linetype_name.setter
    def linetype_name(self, value: str) -> None: ...
    @property
    def linetype_scale(self) -> float:
        """float."""
    @linetype_scale.setter
    def linetype_scale(self, value: float) -> None: ...
    @property
    def lineweight(self) -> int:
        """int, hundredths of a millimetre. -1 ByLayer, -2 ByBlock, -3 default."""
    @lineweight.setter
    def lineweight(self, value: int) -> None: ...
    @property
    def transparency(self) -> int:
        """int, percent 0..90. 0 takes the layer's."""
    @transparency.setter
    def transparency(self, value: int) -> None: ...
    @property
    def visible(self) -> bool:
        """bool."""
    @visible.setter
    def visible(self, value: bool) -> None: ...
    @property
    def elevation(self) -> float:
        """float, drawing units. The z of the entity's plane."""
    @elevation.setter
    def elevation(self, value: float) -> None: ...
    @property
    def thickness(self) -> float:
        """float, drawing units. Extrusion thickness."""
    @thickness.setter
    def thickness(self, value: float) -> None: ...
    @property
    def normal(self) -> Vector3:
        """Vector3. The extrusion direction, of length 1."""
    @normal.setter
    def normal(self, value: Point) -> None: ...
    @property
    def plot_style_name(self) -> str:
        """str."""
    @plot_style_name.setter
    def plot_style_name(self, value: str) -> None: ...
    @property
    def annotative(self) -> bool:
        """bool."""
    @annotative.setter
    def annotative(self, value: bool) -> None: ...
    @property
    def annotation_scale(self) -> float:
        """float."""
    @annotation_scale.setter
    def annotation_scale(self, value: float) -> None: ...
    @property
    def object_scales(self) -> list[str]:
        """list[str]. The annotation scales it supports."""
    @object_scales.setter
    def object_scales(self, value: Sequence[str]) -> None: ...
    @property
    def xdata(self) -> dict[str, list[tuple[int, Any]]]:
        """dict[str, list[tuple[int, Any]]]. Extended data: group codes and values by application name."""
    @xdata.setter
    def xdata(self, value: dict[str, Sequence[tuple[int, Any]]]) -> None: ...
    @property
    def bounds(self) -> BoundingBox2:
        """BoundingBox2. The extents in the plane, drawing units."""

class Line(Entity):
    """The kind "Line".

    Positional arguments: start, end."""
    def __init__(self, start: Point = ..., end: Point = ..., *, end_z: float = ..., start_point: Point = ..., end_point: Point = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def start(self) -> Vector2:
        """Vector2, drawing units."""
    @start.setter
    def start(self, value: Point) -> None: ...
    @property
    def end(self) -> Vector2:
        """Vector2, drawing units."""
    @end.setter
    def end(self, value: Point) -> None: ...
    @property
    def end_z(self) -> float:
        """float, drawing units."""
    @end_z.setter
    def end_z(self, value: float) -> None: ...
    @property
    def start_point(self) -> Vector2:
        """Vector2, drawing units. The same as `start`."""
    @start_point.setter
    def start_point(self, value: Point) -> None: ...
    @property
    def end_point(self) -> Vector2:
        """Vector2, drawing units. The same as `end`."""
    @end_point.setter
    def end_point(self, value: Point) -> None: ...

class Circle(Entity):
    """The kind "Circle".

    Positional arguments: center, radius."""
    def __init__(self, center: Point = ..., radius: float = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def center(self) -> Vector2:
        """Vector2, drawing units."""
    @center.setter
    def center(self, value: Point) -> None: ...
    @property
    def radius(self) -> float:
        """float, drawing units."""
    @radius.setter
    def radius(self, value: float) -> None: ...

class Arc(Entity):
    """The kind "Arc".

    Positional arguments: center, radius, start_angle, end_angle."""
    def __init__(self, center: Point = ..., radius: float = ..., start_angle: float = ..., end_angle: float = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def center(self) -> Vector2:
        """Vector2, drawing units."""
    @center.setter
    def center(self, value: Point) -> None: ...
    @property
    def radius(self) -> float:
        """float, drawing units."""
    @radius.setter
    def radius(self, value: float) -> None: ...
    @property
    def start_angle(self) -> float:
        """float, radians."""
    @start_angle.setter
    def start_angle(self, value: float) -> None: ...
    @property
    def end_angle(self) -> float:
        """float, radians."""
    @end_angle.setter
    def end_angle(self, value: float) -> None: ...

class Polyline(Entity):
    """The kind "Polyline".

    Positional arguments: vertices, closed, bulges."""
    def __init__(self, vertices: Iterable[Point] = ..., closed: bool = ..., bulges: Sequence[float] = ..., *, ltgen: bool = ..., spline: bool = ..., curve_type: int = ..., records: Sequence[dict[str, Any]] = ..., fit: Iterable[Point] = ..., start_widths: Sequence[float] = ..., end_widths: Sequence[float] = ..., points: Iterable[Point] = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def closed(self) -> bool:
        """bool."""
    @closed.setter
    def closed(self, value: bool) -> None: ...
    @property
    def ltgen(self) -> bool:
        """bool."""
    @ltgen.setter
    def ltgen(self, value: bool) -> None: ...
    @property
    def spline(self) -> bool:
        """bool."""
    @spline.setter
    def spline(self, value: bool) -> None: ...
    @property
    def curve_type(self) -> int:
        """int."""
    @curve_type.setter
    def curve_type(self, value: int) -> None: ...
    @property
    def records(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @records.setter
    def records(self, value: Sequence[dict[str, Any]]) -> None: ...
    @property
    def fit(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @fit.setter
    def fit(self, value: Iterable[Point]) -> None: ...
    @property
    def vertices(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @vertices.setter
    def vertices(self, value: Iterable[Point]) -> None: ...
    @property
    def bulges(self) -> list[float]:
        """list[float]."""
    @bulges.setter
    def bulges(self, value: Sequence[float]) -> None: ...
    @property
    def start_widths(self) -> list[float]:
        """list[float]."""
    @start_widths.setter
    def start_widths(self, value: Sequence[float]) -> None: ...
    @property
    def end_widths(self) -> list[float]:
        """list[float]."""
    @end_widths.setter
    def end_widths(self, value: Sequence[float]) -> None: ...
    @property
    def points(self) -> list[Vector2]:
        """list[Vector2], drawing units. The same as `vertices`."""
    @points.setter
    def points(self, value: Iterable[Point]) -> None: ...

class Point(Entity):
    """The kind "Point".

    Positional arguments: position."""
    def __init__(self, position: Point = ..., *, location: Point = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def position(self) -> Vector2:
        """Vector2, drawing units."""
    @position.setter
    def position(self, value: Point) -> None: ...
    @property
    def location(self) -> Vector2:
        """Vector2, drawing units. The same as `position`."""
    @location.setter
    def location(self, value: Point) -> None: ...

class Text(Entity):
    """The kind "Text".

    Positional arguments: insertion_point, height, rotation, content."""
    def __init__(self, insertion_point: Point = ..., height: float = ..., rotation: float = ..., content: str = ..., *, position: Point = ..., h_align: int = ..., v_align: int = ..., fit: bool = ..., fit_end: Point = ..., text_style: str = ..., width_factor: float = ..., oblique: float = ..., generation: int = ..., text: str = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def position(self) -> Vector2:
        """Vector2, drawing units."""
    @position.setter
    def position(self, value: Point) -> None: ...
    @property
    def height(self) -> float:
        """float, drawing units."""
    @height.setter
    def height(self, value: float) -> None: ...
    @property
    def rotation(self) -> float:
        """float, radians."""
    @rotation.setter
    def rotation(self, value: float) -> None: ...
    @property
    def content(self) -> str:
        """str."""
    @content.setter
    def content(self, value: str) -> None: ...
    @property
    def h_align(self) -> int:
        """int."""
    @h_align.setter
    def h_align(self, value: int) -> None: ...
    @property
    def v_align(self) -> int:
        """int."""
    @v_align.setter
    def v_align(self, value: int) -> None: ...
    @property
    def fit(self) -> bool:
        """bool."""
    @fit.setter
    def fit(self, value: bool) -> None: ...
    @property
    def fit_end(self) -> Vector2:
        """Vector2, drawing units."""
    @fit_end.setter
    def fit_end(self, value: Point) -> None: ...
    @property
    def text_style(self) -> str:
        """str."""
    @text_style.setter
    def text_style(self, value: str) -> None: ...
    @property
    def width_factor(self) -> float:
        """float."""
    @width_factor.setter
    def width_factor(self, value: float) -> None: ...
    @property
    def oblique(self) -> float:
        """float, radians."""
    @oblique.setter
    def oblique(self, value: float) -> None: ...
    @property
    def generation(self) -> int:
        """int."""
    @generation.setter
    def generation(self, value: int) -> None: ...
    @property
    def insertion_point(self) -> Vector2:
        """Vector2, drawing units. The same as `position`."""
    @insertion_point.setter
    def insertion_point(self, value: Point) -> None: ...
    @property
    def text(self) -> str:
        """str. The same as `content`."""
    @text.setter
    def text(self, value: str) -> None: ...

class MText(Entity):
    """The kind "MText".

    Positional arguments: insertion_point, width, height, content."""
    def __init__(self, insertion_point: Point = ..., width: float = ..., height: float = ..., content: str = ..., *, position: Point = ..., rotation: float = ..., attachment: int = ..., line_spacing_factor: float = ..., text_style: str = ..., bg_flags: int = ..., bg_color: Color = ..., bg_scale: float = ..., bg_transparency: int = ..., defined_height: float = ..., columns: dict[str, Any] | None = ..., line_spacing_exact: bool = ..., backward: bool = ..., text: str = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def position(self) -> Vector2:
        """Vector2, drawing units."""
    @position.setter
    def position(self, value: Point) -> None: ...
    @property
    def width(self) -> float:
        """float, drawing units."""
    @width.setter
    def width(self, value: float) -> None: ...
    @property
    def height(self) -> float:
        """float, drawing units."""
    @height.setter
    def height(self, value: float) -> None: ...
    @property
    def rotation(self) -> float:
        """float, radians."""
    @rotation.setter
    def rotation(self, value: float) -> None: ...
    @property
    def content(self) -> str:
        """str."""
    @content.setter
    def content(self, value: str) -> None: ...
    @property
    def attachment(self) -> int:
        """int."""
    @attachment.setter
    def attachment(self, value: int) -> None: ...
    @property
    def line_spacing_factor(self) -> float:
        """float."""
    @line_spacing_factor.setter
    def line_spacing_factor(self, value: float) -> None: ...
    @property
    def text_style(self) -> str:
        """str."""
    @text_style.setter
    def text_style(self, value: str) -> None: ...
    @property
    def bg_flags(self) -> int:
        """int."""
    @bg_flags.setter
    def bg_flags(self, value: int) -> None: ...
    @property
    def bg_color(self) -> Color:
        """Color."""
    @bg_color.setter
    def bg_color(self, value: Color) -> None: ...
    @property
    def bg_scale(self) -> float:
        """float."""
    @bg_scale.setter
    def bg_scale(self, value: float) -> None: ...
    @property
    def bg_transparency(self) -> int:
        """int."""
    @bg_transparency.setter
    def bg_transparency(self, value: int) -> None: ...
    @property
    def defined_height(self) -> float:
        """float, drawing units."""
    @defined_height.setter
    def defined_height(self, value: float) -> None: ...
    @property
    def columns(self) -> dict[str, Any] | None:
        """A dict of fields, or None."""
    @columns.setter
    def columns(self, value: dict[str, Any] | None) -> None: ...
    @property
    def line_spacing_exact(self) -> bool:
        """bool."""
    @line_spacing_exact.setter
    def line_spacing_exact(self, value: bool) -> None: ...
    @property
    def backward(self) -> bool:
        """bool."""
    @backward.setter
    def backward(self, value: bool) -> None: ...
    @property
    def insertion_point(self) -> Vector2:
        """Vector2, drawing units. The same as `position`."""
    @insertion_point.setter
    def insertion_point(self, value: Point) -> None: ...
    @property
    def text(self) -> str:
        """str. The same as `content`."""
    @text.setter
    def text(self, value: str) -> None: ...

class Hatch(Entity):
    """The kind "Hatch".

    Positional arguments: pattern_type, pattern_name, pattern_scale, pattern_angle, pattern_origin, double, pattern_mirrored, island_style, seed_points, gradient, own_pattern, loops."""
    def __init__(self, pattern_type: int = ..., pattern_name: str = ..., pattern_scale: float = ..., pattern_angle: float = ..., pattern_origin: Point = ..., double: bool = ..., pattern_mirrored: bool = ..., island_style: int = ..., seed_points: Iterable[Point] = ..., gradient: dict[str, Any] | None = ..., own_pattern: Sequence[dict[str, Any]] = ..., loops: Sequence[dict[str, Any]] = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def pattern_type(self) -> int:
        """int."""
    @pattern_type.setter
    def pattern_type(self, value: int) -> None: ...
    @property
    def pattern_name(self) -> str:
        """str."""
    @pattern_name.setter
    def pattern_name(self, value: str) -> None: ...
    @property
    def pattern_scale(self) -> float:
        """float."""
    @pattern_scale.setter
    def pattern_scale(self, value: float) -> None: ...
    @property
    def pattern_angle(self) -> float:
        """float, radians."""
    @pattern_angle.setter
    def pattern_angle(self, value: float) -> None: ...
    @property
    def pattern_origin(self) -> Vector2:
        """Vector2, drawing units."""
    @pattern_origin.setter
    def pattern_origin(self, value: Point) -> None: ...
    @property
    def double(self) -> bool:
        """bool."""
    @double.setter
    def double(self, value: bool) -> None: ...
    @property
    def pattern_mirrored(self) -> bool:
        """bool."""
    @pattern_mirrored.setter
    def pattern_mirrored(self, value: bool) -> None: ...
    @property
    def island_style(self) -> int:
        """int."""
    @island_style.setter
    def island_style(self, value: int) -> None: ...
    @property
    def seed_points(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @seed_points.setter
    def seed_points(self, value: Iterable[Point]) -> None: ...
    @property
    def gradient(self) -> dict[str, Any] | None:
        """A dict of fields, or None."""
    @gradient.setter
    def gradient(self, value: dict[str, Any] | None) -> None: ...
    @property
    def own_pattern(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @own_pattern.setter
    def own_pattern(self, value: Sequence[dict[str, Any]]) -> None: ...
    @property
    def loops(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @loops.setter
    def loops(self, value: Sequence[dict[str, Any]]) -> None: ...

class Dimension(Entity):
    """The kind "Dimension".

    Positional arguments: sub_type, def1, def2, dim_line, def3, def4, text_height, text_override, text_rotation, user_text, text_at_origin, linear_rotation, oblique_angle, arrow_size, ext_gap, ext_extension, dim_style_name, style_overrides, name_overrides, jogged, jog_center, jog_point, partial_arc, angular_lines, inspect_shape, inspect_label, inspect_rate."""
    def __init__(self, sub_type: int = ..., def1: Point = ..., def2: Point = ..., dim_line: Point = ..., def3: Point = ..., def4: Point = ..., text_height: float = ..., text_override: str = ..., text_rotation: float = ..., user_text: Point = ..., text_at_origin: bool = ..., linear_rotation: float = ..., oblique_angle: float = ..., arrow_size: float = ..., ext_gap: float = ..., ext_extension: float = ..., dim_style_name: str = ..., style_overrides: dict[str, float] = ..., name_overrides: dict[str, str] = ..., jogged: bool = ..., jog_center: Point = ..., jog_point: Point = ..., partial_arc: bool = ..., angular_lines: bool = ..., inspect_shape: int = ..., inspect_label: str = ..., inspect_rate: str = ..., *, dim_style: str = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def sub_type(self) -> int:
        """int."""
    @sub_type.setter
    def sub_type(self, value: int) -> None: ...
    @property
    def def1(self) -> Vector2:
        """Vector2, drawing units."""
    @def1.setter
    def def1(self, value: Point) -> None: ...
    @property
    def def2(self) -> Vector2:
        """Vector2, drawing units."""
    @def2.setter
    def def2(self, value: Point) -> None: ...
    @property
    def dim_line(self) -> Vector2:
        """Vector2, drawing units."""
    @dim_line.setter
    def dim_line(self, value: Point) -> None: ...
    @property
    def def3(self) -> Vector2:
        """Vector2, drawing units."""
    @def3.setter
    def def3(self, value: Point) -> None: ...
    @property
    def def4(self) -> Vector2:
        """Vector2, drawing units."""
    @def4.setter
    def def4(self, value: Point) -> None: ...
    @property
    def text_height(self) -> float:
        """float, drawing units."""
    @text_height.setter
    def text_height(self, value: float) -> None: ...
    @property
    def text_override(self) -> str:
        """str."""
    @text_override.setter
    def text_override(self, value: str) -> None: ...
    @property
    def text_rotation(self) -> float:
        """float, radians."""
    @text_rotation.setter
    def text_rotation(self, value: float) -> None: ...
    @property
    def user_text(self) -> Vector2:
        """Vector2, drawing units."""
    @user_text.setter
    def user_text(self, value: Point) -> None: ...
    @property
    def text_at_origin(self) -> bool:
        """bool."""
    @text_at_origin.setter
    def text_at_origin(self, value: bool) -> None: ...
    @property
    def linear_rotation(self) -> float:
        """float, radians."""
    @linear_rotation.setter
    def linear_rotation(self, value: float) -> None: ...
    @property
    def oblique_angle(self) -> float:
        """float, radians."""
    @oblique_angle.setter
    def oblique_angle(self, value: float) -> None: ...
    @property
    def arrow_size(self) -> float:
        """float, drawing units."""
    @arrow_size.setter
    def arrow_size(self, value: float) -> None: ...
    @property
    def ext_gap(self) -> float:
        """float, drawing units."""
    @ext_gap.setter
    def ext_gap(self, value: float) -> None: ...
    @property
    def ext_extension(self) -> float:
        """float, drawing units."""
    @ext_extension.setter
    def ext_extension(self, value: float) -> None: ...
    @property
    def dim_style_name(self) -> str:
        """str."""
    @dim_style_name.setter
    def dim_style_name(self, value: str) -> None: ...
    @property
    def style_overrides(self) -> dict[str, float]:
        """dict[str, float]."""
    @style_overrides.setter
    def style_overrides(self, value: dict[str, float]) -> None: ...
    @property
    def name_overrides(self) -> dict[str, str]:
        """dict[str, str]."""
    @name_overrides.setter
    def name_overrides(self, value: dict[str, str]) -> None: ...
    @property
    def jogged(self) -> bool:
        """bool."""
    @jogged.setter
    def jogged(self, value: bool) -> None: ...
    @property
    def jog_center(self) -> Vector2:
        """Vector2, drawing units."""
    @jog_center.setter
    def jog_center(self, value: Point) -> None: ...
    @property
    def jog_point(self) -> Vector2:
        """Vector2, drawing units."""
    @jog_point.setter
    def jog_point(self, value: Point) -> None: ...
    @property
    def partial_arc(self) -> bool:
        """bool."""
    @partial_arc.setter
    def partial_arc(self, value: bool) -> None: ...
    @property
    def angular_lines(self) -> bool:
        """bool."""
    @angular_lines.setter
    def angular_lines(self, value: bool) -> None: ...
    @property
    def inspect_shape(self) -> int:
        """int."""
    @inspect_shape.setter
    def inspect_shape(self, value: int) -> None: ...
    @property
    def inspect_label(self) -> str:
        """str."""
    @inspect_label.setter
    def inspect_label(self, value: str) -> None: ...
    @property
    def inspect_rate(self) -> str:
        """str."""
    @inspect_rate.setter
    def inspect_rate(self, value: str) -> None: ...
    @property
    def dim_style(self) -> str:
        """str. The same as `dim_style_name`."""
    @dim_style.setter
    def dim_style(self, value: str) -> None: ...

class BlockReference(Entity):
    """The kind "Block Reference".

    Positional arguments: block_name, insertion_point, scale_x, scale_y, rotation."""
    def __init__(self, block_name: str = ..., insertion_point: Point = ..., scale_x: float = ..., scale_y: float = ..., rotation: float = ..., *, insert: Point = ..., scale_z: float = ..., rows: int = ..., columns: int = ..., row_spacing: float = ..., column_spacing: float = ..., attributes: Sequence[dict[str, Any]] = ..., clip_boundary: Iterable[Point] = ..., clip_inverted: bool = ..., clip_enabled: bool = ..., dyn_param_values: dict[str, float] = ..., dyn_flip_values: dict[str, float] = ..., active_visibility_state: str = ..., name: str = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def block_name(self) -> str:
        """str."""
    @block_name.setter
    def block_name(self, value: str) -> None: ...
    @property
    def insert(self) -> Vector2:
        """Vector2, drawing units."""
    @insert.setter
    def insert(self, value: Point) -> None: ...
    @property
    def scale_x(self) -> float:
        """float."""
    @scale_x.setter
    def scale_x(self, value: float) -> None: ...
    @property
    def scale_y(self) -> float:
        """float."""
    @scale_y.setter
    def scale_y(self, value: float) -> None: ...
    @property
    def scale_z(self) -> float:
        """float."""
    @scale_z.setter
    def scale_z(self, value: float) -> None: ...
    @property
    def rotation(self) -> float:
        """float, radians."""
    @rotation.setter
    def rotation(self, value: float) -> None: ...
    @property
    def rows(self) -> int:
        """int."""
    @rows.setter
    def rows(self, value: int) -> None: ...
    @property
    def columns(self) -> int:
        """int."""
    @columns.setter
    def columns(self, value: int) -> None: ...
    @property
    def row_spacing(self) -> float:
        """float, drawing units."""
    @row_spacing.setter
    def row_spacing(self, value: float) -> None: ...
    @property
    def column_spacing(self) -> float:
        """float, drawing units."""
    @column_spacing.setter
    def column_spacing(self, value: float) -> None: ...
    @property
    def attributes(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @attributes.setter
    def attributes(self, value: Sequence[dict[str, Any]]) -> None: ...
    @property
    def clip_boundary(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @clip_boundary.setter
    def clip_boundary(self, value: Iterable[Point]) -> None: ...
    @property
    def clip_inverted(self) -> bool:
        """bool."""
    @clip_inverted.setter
    def clip_inverted(self, value: bool) -> None: ...
    @property
    def clip_enabled(self) -> bool:
        """bool."""
    @clip_enabled.setter
    def clip_enabled(self, value: bool) -> None: ...
    @property
    def dyn_param_values(self) -> dict[str, float]:
        """dict[str, float]."""
    @dyn_param_values.setter
    def dyn_param_values(self, value: dict[str, float]) -> None: ...
    @property
    def dyn_flip_values(self) -> dict[str, float]:
        """dict[str, float]."""
    @dyn_flip_values.setter
    def dyn_flip_values(self, value: dict[str, float]) -> None: ...
    @property
    def active_visibility_state(self) -> str:
        """str."""
    @active_visibility_state.setter
    def active_visibility_state(self, value: str) -> None: ...
    @property
    def insertion_point(self) -> Vector2:
        """Vector2, drawing units. The same as `insert`."""
    @insertion_point.setter
    def insertion_point(self, value: Point) -> None: ...
    @property
    def name(self) -> str:
        """str. The same as `block_name`."""
    @name.setter
    def name(self, value: str) -> None: ...

class Image(Entity):
    """The kind "Image".

    Positional arguments: file_path, insertion, width, height, rotation, brightness, contrast, fade, show_frame, image_transparency, pixel_width, pixel_height, clip_boundary, clip_enabled."""
    def __init__(self, file_path: str = ..., insertion: Point = ..., width: float = ..., height: float = ..., rotation: float = ..., brightness: int = ..., contrast: int = ..., fade: int = ..., show_frame: bool = ..., image_transparency: int = ..., pixel_width: int = ..., pixel_height: int = ..., clip_boundary: Iterable[Point] = ..., clip_enabled: bool = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def file_path(self) -> str:
        """str."""
    @file_path.setter
    def file_path(self, value: str) -> None: ...
    @property
    def insertion(self) -> Vector2:
        """Vector2, drawing units."""
    @insertion.setter
    def insertion(self, value: Point) -> None: ...
    @property
    def width(self) -> float:
        """float, drawing units."""
    @width.setter
    def width(self, value: float) -> None: ...
    @property
    def height(self) -> float:
        """float, drawing units."""
    @height.setter
    def height(self, value: float) -> None: ...
    @property
    def rotation(self) -> float:
        """float, radians."""
    @rotation.setter
    def rotation(self, value: float) -> None: ...
    @property
    def brightness(self) -> int:
        """int."""
    @brightness.setter
    def brightness(self, value: int) -> None: ...
    @property
    def contrast(self) -> int:
        """int."""
    @contrast.setter
    def contrast(self, value: int) -> None: ...
    @property
    def fade(self) -> int:
        """int."""
    @fade.setter
    def fade(self, value: int) -> None: ...
    @property
    def show_frame(self) -> bool:
        """bool."""
    @show_frame.setter
    def show_frame(self, value: bool) -> None: ...
    @property
    def image_transparency(self) -> int:
        """int."""
    @image_transparency.setter
    def image_transparency(self, value: int) -> None: ...
    @property
    def pixel_width(self) -> int:
        """int."""
    @pixel_width.setter
    def pixel_width(self, value: int) -> None: ...
    @property
    def pixel_height(self) -> int:
        """int."""
    @pixel_height.setter
    def pixel_height(self, value: int) -> None: ...
    @property
    def clip_boundary(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @clip_boundary.setter
    def clip_boundary(self, value: Iterable[Point]) -> None: ...
    @property
    def clip_enabled(self) -> bool:
        """bool."""
    @clip_enabled.setter
    def clip_enabled(self, value: bool) -> None: ...

class Spline(Entity):
    """The kind "Spline".

    Positional arguments: control_points, degree, knots, weights, closed."""
    def __init__(self, control_points: Iterable[Point] = ..., degree: int = ..., knots: Sequence[float] = ..., weights: Sequence[float] = ..., closed: bool = ..., *, fit_points: Iterable[Point] = ..., control_z: Sequence[float] = ..., helix: dict[str, Any] | None = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def degree(self) -> int:
        """int."""
    @degree.setter
    def degree(self, value: int) -> None: ...
    @property
    def closed(self) -> bool:
        """bool."""
    @closed.setter
    def closed(self, value: bool) -> None: ...
    @property
    def control_points(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @control_points.setter
    def control_points(self, value: Iterable[Point]) -> None: ...
    @property
    def knots(self) -> list[float]:
        """list[float]."""
    @knots.setter
    def knots(self, value: Sequence[float]) -> None: ...
    @property
    def fit_points(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @fit_points.setter
    def fit_points(self, value: Iterable[Point]) -> None: ...
    @property
    def control_z(self) -> list[float]:
        """list[float]."""
    @control_z.setter
    def control_z(self, value: Sequence[float]) -> None: ...
    @property
    def weights(self) -> list[float]:
        """list[float]."""
    @weights.setter
    def weights(self, value: Sequence[float]) -> None: ...
    @property
    def helix(self) -> dict[str, Any] | None:
        """A dict of fields, or None."""
    @helix.setter
    def helix(self, value: dict[str, Any] | None) -> None: ...

class Ellipse(Entity):
    """The kind "Ellipse".

    Positional arguments: center, major, minor_ratio, start_param, end_param."""
    def __init__(self, center: Point = ..., major: Point = ..., minor_ratio: float = ..., start_param: float = ..., end_param: float = ..., *, major_axis: Point = ..., ratio: float = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def center(self) -> Vector2:
        """Vector2, drawing units."""
    @center.setter
    def center(self, value: Point) -> None: ...
    @property
    def major(self) -> Vector2:
        """Vector2, drawing units."""
    @major.setter
    def major(self, value: Point) -> None: ...
    @property
    def minor_ratio(self) -> float:
        """float."""
    @minor_ratio.setter
    def minor_ratio(self, value: float) -> None: ...
    @property
    def start_param(self) -> float:
        """float, radians."""
    @start_param.setter
    def start_param(self, value: float) -> None: ...
    @property
    def end_param(self) -> float:
        """float, radians."""
    @end_param.setter
    def end_param(self, value: float) -> None: ...
    @property
    def major_axis(self) -> Vector2:
        """Vector2, drawing units. The same as `major`."""
    @major_axis.setter
    def major_axis(self, value: Point) -> None: ...
    @property
    def ratio(self) -> float:
        """float. The same as `minor_ratio`."""
    @ratio.setter
    def ratio(self, value: float) -> None: ...

class Xline(Entity):
    """The kind "Xline".

    Positional arguments: base, dir."""
    def __init__(self, base: Point = ..., dir: Point = ..., *, base_point: Point = ..., direction: Point = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def base(self) -> Vector2:
        """Vector2, drawing units."""
    @base.setter
    def base(self, value: Point) -> None: ...
    @property
    def dir(self) -> Vector2:
        """Vector2, drawing units."""
    @dir.setter
    def dir(self, value: Point) -> None: ...
    @property
    def base_point(self) -> Vector2:
        """Vector2, drawing units. The same as `base`."""
    @base_point.setter
    def base_point(self, value: Point) -> None: ...
    @property
    def direction(self) -> Vector2:
        """Vector2, drawing units. The same as `dir`."""
    @direction.setter
    def direction(self, value: Point) -> None: ...

class Ray(Entity):
    """The kind "Ray".

    Positional arguments: origin, dir."""
    def __init__(self, origin: Point = ..., dir: Point = ..., *, base_point: Point = ..., direction: Point = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def origin(self) -> Vector2:
        """Vector2, drawing units."""
    @origin.setter
    def origin(self, value: Point) -> None: ...
    @property
    def dir(self) -> Vector2:
        """Vector2, drawing units."""
    @dir.setter
    def dir(self, value: Point) -> None: ...
    @property
    def base_point(self) -> Vector2:
        """Vector2, drawing units. The same as `origin`."""
    @base_point.setter
    def base_point(self, value: Point) -> None: ...
    @property
    def direction(self) -> Vector2:
        """Vector2, drawing units. The same as `dir`."""
    @direction.setter
    def direction(self, value: Point) -> None: ...

class Leader(Entity):
    """The kind "Leader".

    Positional arguments: vertices, annotation."""
    def __init__(self, vertices: Iterable[Point] = ..., annotation: str = ..., *, arrow_size: float = ..., text_height: float = ..., has_arrow: bool = ..., splined: bool = ..., hook_line: bool = ..., hook_dir: int = ..., arrow_block: str = ..., annotation_handle: str = ..., annotation_width: float = ..., dim_style_name: str = ..., text: str = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def vertices(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @vertices.setter
    def vertices(self, value: Iterable[Point]) -> None: ...
    @property
    def annotation(self) -> str:
        """str."""
    @annotation.setter
    def annotation(self, value: str) -> None: ...
    @property
    def arrow_size(self) -> float:
        """float, drawing units."""
    @arrow_size.setter
    def arrow_size(self, value: float) -> None: ...
    @property
    def text_height(self) -> float:
        """float, drawing units."""
    @text_height.setter
    def text_height(self, value: float) -> None: ...
    @property
    def has_arrow(self) -> bool:
        """bool."""
    @has_arrow.setter
    def has_arrow(self, value: bool) -> None: ...
    @property
    def splined(self) -> bool:
        """bool."""
    @splined.setter
    def splined(self, value: bool) -> None: ...
    @property
    def hook_line(self) -> bool:
        """bool."""
    @hook_line.setter
    def hook_line(self, value: bool) -> None: ...
    @property
    def hook_dir(self) -> int:
        """int."""
    @hook_dir.setter
    def hook_dir(self, value: int) -> None: ...
    @property
    def arrow_block(self) -> str:
        """str."""
    @arrow_block.setter
    def arrow_block(self, value: str) -> None: ...
    @property
    def annotation_handle(self) -> str:
        """str."""
    @annotation_handle.setter
    def annotation_handle(self, value: str) -> None: ...
    @property
    def annotation_width(self) -> float:
        """float, drawing units."""
    @annotation_width.setter
    def annotation_width(self, value: float) -> None: ...
    @property
    def dim_style_name(self) -> str:
        """str."""
    @dim_style_name.setter
    def dim_style_name(self, value: str) -> None: ...
    @property
    def text(self) -> str:
        """str. The same as `annotation`."""
    @text.setter
    def text(self, value: str) -> None: ...

class MLine(Entity):
    """The kind "MLine".

    Positional arguments: vertices, mline_scale."""
    def __init__(self, vertices: Iterable[Point] = ..., mline_scale: float = ..., *, elements: Sequence[dict[str, Any]] = ..., justification_acad: int = ..., closed: bool = ..., style_name: str = ..., flags: int = ..., fill_color: Color = ..., start_angle: float = ..., end_angle: float = ..., justification: int = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def vertices(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @vertices.setter
    def vertices(self, value: Iterable[Point]) -> None: ...
    @property
    def mline_scale(self) -> float:
        """float."""
    @mline_scale.setter
    def mline_scale(self, value: float) -> None: ...
    @property
    def elements(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @elements.setter
    def elements(self, value: Sequence[dict[str, Any]]) -> None: ...
    @property
    def justification_acad(self) -> int:
        """int."""
    @justification_acad.setter
    def justification_acad(self, value: int) -> None: ...
    @property
    def closed(self) -> bool:
        """bool."""
    @closed.setter
    def closed(self, value: bool) -> None: ...
    @property
    def style_name(self) -> str:
        """str."""
    @style_name.setter
    def style_name(self, value: str) -> None: ...
    @property
    def flags(self) -> int:
        """int."""
    @flags.setter
    def flags(self, value: int) -> None: ...
    @property
    def fill_color(self) -> Color:
        """Color."""
    @fill_color.setter
    def fill_color(self, value: Color) -> None: ...
    @property
    def start_angle(self) -> float:
        """float, radians."""
    @start_angle.setter
    def start_angle(self, value: float) -> None: ...
    @property
    def end_angle(self) -> float:
        """float, radians."""
    @end_angle.setter
    def end_angle(self, value: float) -> None: ...
    @property
    def justification(self) -> int:
        """int. The same as `justification_acad`."""
    @justification.setter
    def justification(self, value: int) -> None: ...

class MLeader(Entity):
    """The kind "MLeader".

    Positional arguments: heads, content_type, text_content, block_name, attributes, content_pos, landing_gap, landing_distance, has_landing, has_dogleg, arrow_size, text_height, style_name, overrides."""
    def __init__(self, heads: Sequence[dict[str, Any]] = ..., content_type: int = ..., text_content: str = ..., block_name: str = ..., attributes: Sequence[dict[str, Any]] = ..., content_pos: Point = ..., landing_gap: float = ..., landing_distance: float = ..., has_landing: bool = ..., has_dogleg: bool = ..., arrow_size: float = ..., text_height: float = ..., style_name: str = ..., overrides: dict[str, Any] | None = ..., *, text: str = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def heads(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @heads.setter
    def heads(self, value: Sequence[dict[str, Any]]) -> None: ...
    @property
    def content_type(self) -> int:
        """int."""
    @content_type.setter
    def content_type(self, value: int) -> None: ...
    @property
    def text_content(self) -> str:
        """str."""
    @text_content.setter
    def text_content(self, value: str) -> None: ...
    @property
    def block_name(self) -> str:
        """str."""
    @block_name.setter
    def block_name(self, value: str) -> None: ...
    @property
    def attributes(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @attributes.setter
    def attributes(self, value: Sequence[dict[str, Any]]) -> None: ...
    @property
    def content_pos(self) -> Vector2:
        """Vector2, drawing units."""
    @content_pos.setter
    def content_pos(self, value: Point) -> None: ...
    @property
    def landing_gap(self) -> float:
        """float, drawing units."""
    @landing_gap.setter
    def landing_gap(self, value: float) -> None: ...
    @property
    def landing_distance(self) -> float:
        """float, drawing units."""
    @landing_distance.setter
    def landing_distance(self, value: float) -> None: ...
    @property
    def has_landing(self) -> bool:
        """bool."""
    @has_landing.setter
    def has_landing(self, value: bool) -> None: ...
    @property
    def has_dogleg(self) -> bool:
        """bool."""
    @has_dogleg.setter
    def has_dogleg(self, value: bool) -> None: ...
    @property
    def arrow_size(self) -> float:
        """float, drawing units."""
    @arrow_size.setter
    def arrow_size(self, value: float) -> None: ...
    @property
    def text_height(self) -> float:
        """float, drawing units."""
    @text_height.setter
    def text_height(self, value: float) -> None: ...
    @property
    def style_name(self) -> str:
        """str."""
    @style_name.setter
    def style_name(self, value: str) -> None: ...
    @property
    def overrides(self) -> dict[str, Any] | None:
        """A dict of fields, or None."""
    @overrides.setter
    def overrides(self, value: dict[str, Any] | None) -> None: ...
    @property
    def text(self) -> str:
        """str. The same as `text_content`."""
    @text.setter
    def text(self, value: str) -> None: ...

class Table(Entity):
    """The kind "Table".

    Positional arguments: insertion, rows, cols."""
    def __init__(self, insertion: Point = ..., rows: int = ..., cols: int = ..., *, row_heights: Sequence[float] = ..., col_widths: Sequence[float] = ..., text_height: float = ..., row_text_heights: Sequence[float] = ..., style_name: str = ..., cells: Sequence[dict[str, Any]] = ..., rotation: float = ..., horizontal_margin: float = ..., vertical_margin: float = ..., insertion_point: Point = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def insertion(self) -> Vector2:
        """Vector2, drawing units."""
    @insertion.setter
    def insertion(self, value: Point) -> None: ...
    @property
    def rows(self) -> int:
        """int."""
    @rows.setter
    def rows(self, value: int) -> None: ...
    @property
    def cols(self) -> int:
        """int."""
    @cols.setter
    def cols(self, value: int) -> None: ...
    @property
    def row_heights(self) -> list[float]:
        """list[float]."""
    @row_heights.setter
    def row_heights(self, value: Sequence[float]) -> None: ...
    @property
    def col_widths(self) -> list[float]:
        """list[float]."""
    @col_widths.setter
    def col_widths(self, value: Sequence[float]) -> None: ...
    @property
    def text_height(self) -> float:
        """float, drawing units."""
    @text_height.setter
    def text_height(self, value: float) -> None: ...
    @property
    def row_text_heights(self) -> list[float]:
        """list[float]."""
    @row_text_heights.setter
    def row_text_heights(self, value: Sequence[float]) -> None: ...
    @property
    def style_name(self) -> str:
        """str."""
    @style_name.setter
    def style_name(self, value: str) -> None: ...
    @property
    def cells(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @cells.setter
    def cells(self, value: Sequence[dict[str, Any]]) -> None: ...
    @property
    def rotation(self) -> float:
        """float, radians."""
    @rotation.setter
    def rotation(self, value: float) -> None: ...
    @property
    def horizontal_margin(self) -> float:
        """float, drawing units."""
    @horizontal_margin.setter
    def horizontal_margin(self, value: float) -> None: ...
    @property
    def vertical_margin(self) -> float:
        """float, drawing units."""
    @vertical_margin.setter
    def vertical_margin(self, value: float) -> None: ...
    @property
    def insertion_point(self) -> Vector2:
        """Vector2, drawing units. The same as `insertion`."""
    @insertion_point.setter
    def insertion_point(self, value: Point) -> None: ...

class Wipeout(Entity):
    """The kind "Wipeout".

    Positional arguments: vertices."""
    def __init__(self, vertices: Iterable[Point] = ..., *, show_frame: bool = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def vertices(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @vertices.setter
    def vertices(self, value: Iterable[Point]) -> None: ...
    @property
    def show_frame(self) -> bool:
        """bool."""
    @show_frame.setter
    def show_frame(self, value: bool) -> None: ...

class Region(Entity):
    """The kind "Region".

    Positional arguments: vertices, bulges, loops."""
    def __init__(self, vertices: Iterable[Point] = ..., bulges: Sequence[float] = ..., loops: Sequence[dict[str, Any]] = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def vertices(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @vertices.setter
    def vertices(self, value: Iterable[Point]) -> None: ...
    @property
    def bulges(self) -> list[float]:
        """list[float]."""
    @bulges.setter
    def bulges(self, value: Sequence[float]) -> None: ...
    @property
    def loops(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @loops.setter
    def loops(self, value: Sequence[dict[str, Any]]) -> None: ...

class Tolerance(Entity):
    """The kind "Tolerance".

    Positional arguments: insertion, text_height, style_name, rotation, symbol, tolerance_value, tolerance_mc, datum1, datum1_mc, datum2, datum2_mc, datum3, datum3_mc, tolerance_value2, tolerance_mc2, whole, rows."""
    def __init__(self, insertion: Point = ..., text_height: float = ..., style_name: str = ..., rotation: float = ..., symbol: str = ..., tolerance_value: str = ..., tolerance_mc: str = ..., datum1: str = ..., datum1_mc: str = ..., datum2: str = ..., datum2_mc: str = ..., datum3: str = ..., datum3_mc: str = ..., tolerance_value2: str = ..., tolerance_mc2: str = ..., whole: bool = ..., rows: Sequence[dict[str, Any]] = ..., *, insertion_point: Point = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def insertion(self) -> Vector2:
        """Vector2, drawing units."""
    @insertion.setter
    def insertion(self, value: Point) -> None: ...
    @property
    def text_height(self) -> float:
        """float, drawing units."""
    @text_height.setter
    def text_height(self, value: float) -> None: ...
    @property
    def style_name(self) -> str:
        """str."""
    @style_name.setter
    def style_name(self, value: str) -> None: ...
    @property
    def rotation(self) -> float:
        """float, radians."""
    @rotation.setter
    def rotation(self, value: float) -> None: ...
    @property
    def symbol(self) -> str:
        """str."""
    @symbol.setter
    def symbol(self, value: str) -> None: ...
    @property
    def tolerance_value(self) -> str:
        """str."""
    @tolerance_value.setter
    def tolerance_value(self, value: str) -> None: ...
    @property
    def tolerance_mc(self) -> str:
        """str."""
    @tolerance_mc.setter
    def tolerance_mc(self, value: str) -> None: ...
    @property
    def datum1(self) -> str:
        """str."""
    @datum1.setter
    def datum1(self, value: str) -> None: ...
    @property
    def datum1_mc(self) -> str:
        """str."""
    @datum1_mc.setter
    def datum1_mc(self, value: str) -> None: ...
    @property
    def datum2(self) -> str:
        """str."""
    @datum2.setter
    def datum2(self, value: str) -> None: ...
    @property
    def datum2_mc(self) -> str:
        """str."""
    @datum2_mc.setter
    def datum2_mc(self, value: str) -> None: ...
    @property
    def datum3(self) -> str:
        """str."""
    @datum3.setter
    def datum3(self, value: str) -> None: ...
    @property
    def datum3_mc(self) -> str:
        """str."""
    @datum3_mc.setter
    def datum3_mc(self, value: str) -> None: ...
    @property
    def tolerance_value2(self) -> str:
        """str."""
    @tolerance_value2.setter
    def tolerance_value2(self, value: str) -> None: ...
    @property
    def tolerance_mc2(self) -> str:
        """str."""
    @tolerance_mc2.setter
    def tolerance_mc2(self, value: str) -> None: ...
    @property
    def whole(self) -> bool:
        """bool."""
    @whole.setter
    def whole(self, value: bool) -> None: ...
    @property
    def rows(self) -> list[dict[str, Any]]:
        """A list of dicts of fields."""
    @rows.setter
    def rows(self, value: Sequence[dict[str, Any]]) -> None: ...
    @property
    def insertion_point(self) -> Vector2:
        """Vector2, drawing units. The same as `insertion`."""
    @insertion_point.setter
    def insertion_point(self, value: Point) -> None: ...

class AttributeDefinition(Entity):
    """The kind "Attribute Definition".

    Positional arguments: tag, insertion, text_height."""
    def __init__(self, tag: str = ..., insertion: Point = ..., text_height: float = ..., *, prompt: str = ..., default_value: str = ..., rotation: float = ..., text_style: str = ..., invisible: bool = ..., constant: bool = ..., verify: bool = ..., preset: bool = ..., locked: bool = ..., multiline: bool = ..., width: float = ..., h_align: int = ..., v_align: int = ..., generation: int = ..., width_factor: float = ..., oblique: float = ..., fit: bool = ..., fit_end: Point = ..., insertion_point: Point = ..., height: float = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def tag(self) -> str:
        """str."""
    @tag.setter
    def tag(self, value: str) -> None: ...
    @property
    def prompt(self) -> str:
        """str."""
    @prompt.setter
    def prompt(self, value: str) -> None: ...
    @property
    def default_value(self) -> str:
        """str."""
    @default_value.setter
    def default_value(self, value: str) -> None: ...
    @property
    def insertion(self) -> Vector2:
        """Vector2, drawing units."""
    @insertion.setter
    def insertion(self, value: Point) -> None: ...
    @property
    def text_height(self) -> float:
        """float, drawing units."""
    @text_height.setter
    def text_height(self, value: float) -> None: ...
    @property
    def rotation(self) -> float:
        """float, radians."""
    @rotation.setter
    def rotation(self, value: float) -> None: ...
    @property
    def text_style(self) -> str:
        """str."""
    @text_style.setter
    def text_style(self, value: str) -> None: ...
    @property
    def invisible(self) -> bool:
        """bool."""
    @invisible.setter
    def invisible(self, value: bool) -> None: ...
    @property
    def constant(self) -> bool:
        """bool."""
    @constant.setter
    def constant(self, value: bool) -> None: ...
    @property
    def verify(self) -> bool:
        """bool."""
    @verify.setter
    def verify(self, value: bool) -> None: ...
    @property
    def preset(self) -> bool:
        """bool."""
    @preset.setter
    def preset(self, value: bool) -> None: ...
    @property
    def locked(self) -> bool:
        """bool."""
    @locked.setter
    def locked(self, value: bool) -> None: ...
    @property
    def multiline(self) -> bool:
        """bool."""
    @multiline.setter
    def multiline(self, value: bool) -> None: ...
    @property
    def width(self) -> float:
        """float, drawing units."""
    @width.setter
    def width(self, value: float) -> None: ...
    @property
    def h_align(self) -> int:
        """int."""
    @h_align.setter
    def h_align(self, value: int) -> None: ...
    @property
    def v_align(self) -> int:
        """int."""
    @v_align.setter
    def v_align(self, value: int) -> None: ...
    @property
    def generation(self) -> int:
        """int."""
    @generation.setter
    def generation(self, value: int) -> None: ...
    @property
    def width_factor(self) -> float:
        """float."""
    @width_factor.setter
    def width_factor(self, value: float) -> None: ...
    @property
    def oblique(self) -> float:
        """float, radians."""
    @oblique.setter
    def oblique(self, value: float) -> None: ...
    @property
    def fit(self) -> bool:
        """bool."""
    @fit.setter
    def fit(self, value: bool) -> None: ...
    @property
    def fit_end(self) -> Vector2:
        """Vector2, drawing units."""
    @fit_end.setter
    def fit_end(self, value: Point) -> None: ...
    @property
    def insertion_point(self) -> Vector2:
        """Vector2, drawing units. The same as `insertion`."""
    @insertion_point.setter
    def insertion_point(self, value: Point) -> None: ...
    @property
    def height(self) -> float:
        """float, drawing units. The same as `text_height`."""
    @height.setter
    def height(self, value: float) -> None: ...

class Viewport(Entity):
    """The kind "Viewport".

    Positional arguments: center, width, height, view_target, view_scale, view_twist, on, locked, vp_id, snap_base, snap_spacing, grid_spacing, snap_angle, status_flags, vp_frozen_layers, clip_handle, view_direction_x, view_direction_y, view_direction_z, view_target_z."""
    def __init__(self, center: Point = ..., width: float = ..., height: float = ..., view_target: Point = ..., view_scale: float = ..., view_twist: float = ..., on: bool = ..., locked: bool = ..., vp_id: int = ..., snap_base: Point = ..., snap_spacing: Point = ..., grid_spacing: Point = ..., snap_angle: float = ..., status_flags: int = ..., vp_frozen_layers: Sequence[str] = ..., clip_handle: str = ..., view_direction_x: float = ..., view_direction_y: float = ..., view_direction_z: float = ..., view_target_z: float = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def center(self) -> Vector2:
        """Vector2, drawing units."""
    @center.setter
    def center(self, value: Point) -> None: ...
    @property
    def width(self) -> float:
        """float, drawing units."""
    @width.setter
    def width(self, value: float) -> None: ...
    @property
    def height(self) -> float:
        """float, drawing units."""
    @height.setter
    def height(self, value: float) -> None: ...
    @property
    def view_target(self) -> Vector2:
        """Vector2, drawing units."""
    @view_target.setter
    def view_target(self, value: Point) -> None: ...
    @property
    def view_scale(self) -> float:
        """float."""
    @view_scale.setter
    def view_scale(self, value: float) -> None: ...
    @property
    def view_twist(self) -> float:
        """float, radians."""
    @view_twist.setter
    def view_twist(self, value: float) -> None: ...
    @property
    def on(self) -> bool:
        """bool."""
    @on.setter
    def on(self, value: bool) -> None: ...
    @property
    def locked(self) -> bool:
        """bool."""
    @locked.setter
    def locked(self, value: bool) -> None: ...
    @property
    def vp_id(self) -> int:
        """int."""
    @vp_id.setter
    def vp_id(self, value: int) -> None: ...
    @property
    def snap_base(self) -> Vector2:
        """Vector2, drawing units."""
    @snap_base.setter
    def snap_base(self, value: Point) -> None: ...
    @property
    def snap_spacing(self) -> Vector2:
        """Vector2, drawing units."""
    @snap_spacing.setter
    def snap_spacing(self, value: Point) -> None: ...
    @property
    def grid_spacing(self) -> Vector2:
        """Vector2, drawing units."""
    @grid_spacing.setter
    def grid_spacing(self, value: Point) -> None: ...
    @property
    def snap_angle(self) -> float:
        """float, radians."""
    @snap_angle.setter
    def snap_angle(self, value: float) -> None: ...
    @property
    def status_flags(self) -> int:
        """int."""
    @status_flags.setter
    def status_flags(self, value: int) -> None: ...
    @property
    def vp_frozen_layers(self) -> list[str]:
        """list[str]."""
    @vp_frozen_layers.setter
    def vp_frozen_layers(self, value: Sequence[str]) -> None: ...
    @property
    def clip_handle(self) -> str:
        """str."""
    @clip_handle.setter
    def clip_handle(self, value: str) -> None: ...
    @property
    def view_direction_x(self) -> float:
        """float."""
    @view_direction_x.setter
    def view_direction_x(self, value: float) -> None: ...
    @property
    def view_direction_y(self) -> float:
        """float."""
    @view_direction_y.setter
    def view_direction_y(self, value: float) -> None: ...
    @property
    def view_direction_z(self) -> float:
        """float."""
    @view_direction_z.setter
    def view_direction_z(self, value: float) -> None: ...
    @property
    def view_target_z(self) -> float:
        """float, drawing units."""
    @view_target_z.setter
    def view_target_z(self, value: float) -> None: ...

class Face3D(Entity):
    """The kind "3D Face".

    Positional arguments: vertices, edge_flags."""
    def __init__(self, vertices: Iterable[Point] = ..., edge_flags: int = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def vertices(self) -> list[Vector3]:
        """list[Vector3], drawing units."""
    @vertices.setter
    def vertices(self, value: Iterable[Point]) -> None: ...
    @property
    def edge_flags(self) -> int:
        """int."""
    @edge_flags.setter
    def edge_flags(self, value: int) -> None: ...

class Polyline3D(Entity):
    """The kind "3D Polyline".

    Positional arguments: vertices, closed."""
    def __init__(self, vertices: Iterable[Point] = ..., closed: bool = ..., *, curve_type: int = ..., frame: Iterable[Point] = ..., points: Iterable[Point] = ..., layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def vertices(self) -> list[Vector3]:
        """list[Vector3], drawing units."""
    @vertices.setter
    def vertices(self, value: Iterable[Point]) -> None: ...
    @property
    def closed(self) -> bool:
        """bool."""
    @closed.setter
    def closed(self, value: bool) -> None: ...
    @property
    def curve_type(self) -> int:
        """int."""
    @curve_type.setter
    def curve_type(self, value: int) -> None: ...
    @property
    def frame(self) -> list[Vector3]:
        """list[Vector3], drawing units."""
    @frame.setter
    def frame(self, value: Iterable[Point]) -> None: ...
    @property
    def points(self) -> list[Vector3]:
        """list[Vector3], drawing units. The same as `vertices`."""
    @points.setter
    def points(self, value: Iterable[Point]) -> None: ...

class Mesh(Entity):
    """The kind "Mesh".

    Positional arguments: rows, cols, closed_m, closed_n, vertices, surface_type, frame_rows, frame_cols, frame."""
    def __init__(self, rows: int = ..., cols: int = ..., closed_m: bool = ..., closed_n: bool = ..., vertices: Iterable[Point] = ..., surface_type: int = ..., frame_rows: int = ..., frame_cols: int = ..., frame: Iterable[Point] = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def rows(self) -> int:
        """int."""
    @rows.setter
    def rows(self, value: int) -> None: ...
    @property
    def cols(self) -> int:
        """int."""
    @cols.setter
    def cols(self, value: int) -> None: ...
    @property
    def closed_m(self) -> bool:
        """bool."""
    @closed_m.setter
    def closed_m(self, value: bool) -> None: ...
    @property
    def closed_n(self) -> bool:
        """bool."""
    @closed_n.setter
    def closed_n(self, value: bool) -> None: ...
    @property
    def vertices(self) -> list[Vector3]:
        """list[Vector3], drawing units."""
    @vertices.setter
    def vertices(self, value: Iterable[Point]) -> None: ...
    @property
    def surface_type(self) -> int:
        """int."""
    @surface_type.setter
    def surface_type(self, value: int) -> None: ...
    @property
    def frame_rows(self) -> int:
        """int."""
    @frame_rows.setter
    def frame_rows(self, value: int) -> None: ...
    @property
    def frame_cols(self) -> int:
        """int."""
    @frame_cols.setter
    def frame_cols(self, value: int) -> None: ...
    @property
    def frame(self) -> list[Vector3]:
        """list[Vector3], drawing units."""
    @frame.setter
    def frame(self, value: Iterable[Point]) -> None: ...

class Solid3D(Entity):
    """The kind "3D Solid".

    Positional arguments: body_kind, modeler_version, sat, sab."""
    def __init__(self, body_kind: str = ..., modeler_version: int = ..., sat: str = ..., sab: str = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def body_kind(self) -> str:
        """str."""
    @body_kind.setter
    def body_kind(self, value: str) -> None: ...
    @property
    def modeler_version(self) -> int:
        """int."""
    @modeler_version.setter
    def modeler_version(self, value: int) -> None: ...
    @property
    def sat(self) -> str:
        """str."""
    @sat.setter
    def sat(self, value: str) -> None: ...
    @property
    def sab(self) -> str:
        """str."""
    @sab.setter
    def sab(self, value: str) -> None: ...

class Solid2D(Entity):
    """The kind "2D Solid".

    Positional arguments: corners, trace."""
    def __init__(self, corners: Iterable[Point] = ..., trace: bool = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def corners(self) -> list[Vector2]:
        """list[Vector2], drawing units."""
    @corners.setter
    def corners(self, value: Iterable[Point]) -> None: ...
    @property
    def trace(self) -> bool:
        """bool."""
    @trace.setter
    def trace(self, value: bool) -> None: ...

class Polyface(Entity):
    """The kind "Polyface Mesh".

    Positional arguments: vertices, faces."""
    def __init__(self, vertices: Iterable[Point] = ..., faces: Sequence[Sequence[int]] = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def vertices(self) -> list[Vector3]:
        """list[Vector3], drawing units."""
    @vertices.setter
    def vertices(self, value: Iterable[Point]) -> None: ...
    @property
    def faces(self) -> list[list[int]]:
        """list[list[int]]."""
    @faces.setter
    def faces(self, value: Sequence[Sequence[int]]) -> None: ...

class Shape(Entity):
    """The kind "Shape".

    Positional arguments: position, name, number, file, size, rotation, width_factor, oblique."""
    def __init__(self, position: Point = ..., name: str = ..., number: int = ..., file: str = ..., size: float = ..., rotation: float = ..., width_factor: float = ..., oblique: float = ..., *, layer_name: str = ..., color: Color = ..., color_index: int = ..., linetype_name: str = ..., linetype_scale: float = ..., lineweight: int = ..., transparency: int = ..., visible: bool = ..., elevation: float = ..., thickness: float = ..., normal: Point = ..., plot_style_name: str = ..., annotative: bool = ..., annotation_scale: float = ..., object_scales: Sequence[str] = ..., xdata: dict[str, Sequence[tuple[int, Any]]] = ...) -> None: ...
    @property
    def position(self) -> Vector2:
        """Vector2, drawing units."""
    @position.setter
    def position(self, value: Point) -> None: ...
    @property
    def name(self) -> str:
        """str."""
    @name.setter
    def name(self, value: str) -> None: ...
    @property
    def number(self) -> int:
        """int."""
    @number.setter
    def number(self, value: int) -> None: ...
    @property
    def file(self) -> str:
        """str."""
    @file.setter
    def file(self, value: str) -> None: ...
    @property
    def size(self) -> float:
        """float, drawing units."""
    @size.setter
    def size(self, value: float) -> None: ...
    @property
    def rotation(self) -> float:
        """float, radians."""
    @rotation.setter
    def rotation(self, value: float) -> None: ...
    @property
    def width_factor(self) -> float:
        """float."""
    @width_factor.setter
    def width_factor(self, value: float) -> None: ...
    @property
    def oblique(self) -> float:
        """float, radians."""
    @oblique.setter
    def oblique(self, value: float) -> None: ...

def kinds() -> List[type[Entity]]:
    """All kinds, in the order of their numbers."""
