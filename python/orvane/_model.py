"""The model: a file or a scene of arrays, with its settings."""

from __future__ import annotations

import json
import os
import threading
from collections.abc import Callable, Sequence
from types import TracebackType
from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _arrays, _native, _words
from ._errors import NodeError
from ._native import Model as _NativeModel
from ._scene import (Camera, ColorLike, Dimension, Geometry, Hit, Material, Node, Sun, SunHours, Text,
                     material_values)

if TYPE_CHECKING:
    from typing import Unpack

    from ._settings import Settings

PathLike = str | bytes | os.PathLike[Any]

#: Of a picture that a notebook shows.
_SHOWN_SIZE = (960, 600)


def _reading(textures: bool, keep_coplanar: bool, show_backs: bool, progress: Callable[[float], object] | None,
             alone: bool = False) -> _native.Reading:
    return _native.Reading(textures=bool(textures), keep_coplanar=bool(keep_coplanar), show_backs=bool(show_backs),
                           alone=alone, progress=progress)


def open(path: PathLike, *more: PathLike, textures: bool = True, keep_coplanar: bool = False, show_backs: bool = True,
         progress: Callable[[float], object] | None = None, **settings: Unpack[Settings]) -> Model:
    """Opens a model file, in a process of its own, so that a damaged file harms nobody.

    :param path: a file of any of :func:`formats`.
    :param more: further files, which stand beside it as by :meth:`Model.add_file`.
    :param textures: whether pictures on surfaces are read.
    :param keep_coplanar: leaves faces in one plane to show in turns, where else the thinner of two things is seen.
    :param show_backs: whether backs of faces may be drawn, by ``cull_backs=False`` or clip planes. Where they never
        are, ``False`` leaves faces that look opposite ways in one plane alone, which divides fewer meshes.
    :param progress: called now and then with the share that is read, 0 to 100; ``False`` as an answer ends it.
    :param settings: as for :meth:`Model.set`.
    :raises FileError: with the reason and the remedy.
    """
    model = Model.__new__(Model)
    # Files beside each other keep the places that they have in common.
    how = _reading(textures, keep_coplanar, show_backs, progress, alone=not more)
    model._begin(_native.Model.open(os.fsdecode(path), how))
    for other in more:
        model.add_file(other, textures=textures, keep_coplanar=keep_coplanar, show_backs=show_backs, progress=progress)
    return model.set(**settings)


def save_picture(path: PathLike, picture: ArrayLike, *, dpi: float | None = None) -> None:
    """Writes a picture of :meth:`Model.picture`, :meth:`Model.sun_study` or one's own into a PNG or JPEG file.

    :param picture: shape (height, width), (height, width, 3) or (height, width, 4), uint8 or floats of 0 to 1.
    :param dpi: as for :meth:`Model.save`.
    :raises FileError: with the reason and the remedy.
    """
    _native.save_picture(os.fsdecode(path), _arrays.picture(picture, "picture"), _pixels_per_metre(dpi))


def _pixels_per_metre(dpi: float | None) -> float:
    return 0.0 if dpi is None else _words.number(dpi, "dpi", 1, 10000) / 0.0254


def formats() -> dict[str, list[str]]:
    """Gives the file formats that can be read, each with its endings."""
    return _native.formats()


class Model:
    """A model, opened by :func:`open` or built from arrays, with the settings that it is shown in.

    What changes something gives the model back, so that calls can be chained. Lengths are in the units of the
    model, Y is up unless ``view={"up_axis": "z"}``, and pixels count from the upper left corner of the picture.
    """

    _native: _NativeModel
    _lock: threading.RLock
    _files_lock: threading.RLock

    def __init__(self, **settings: Unpack[Settings]) -> None:
        """Makes an empty model, to be filled by :meth:`add_mesh` and its like."""
        self._begin(_native.Model())
        self.set(**settings)

    def _begin(self, native: _NativeModel) -> None:
        self._native = native
        # Reading, changing and writing settings is one step for other threads.
        self._lock = threading.RLock()
        # And so is finding a file and putting another one in its place.
        self._files_lock = threading.RLock()
        self._default: Material | None = None

    # Files

    @property
    def files(self) -> list[str]:
        """The files that stand beside each other in the model, as they were opened, in their order."""
        return self._native.files()

    def add_file(self, path: PathLike, *, textures: bool = True, keep_coplanar: bool = False, show_backs: bool = True,
                 progress: Callable[[float], object] | None = None) -> Model:
        """Puts another file beside what is there, brought to the same unit where both tell theirs.

        The node at its top keeps its name, or takes that of the file. A view without an eye has room for all.

        :param textures: as for :func:`open`, as are ``keep_coplanar``, ``show_backs`` and ``progress``.
        :raises FileError: with the reason and the remedy; the model stays as it was.
        """
        with self._files_lock:
            self._native.add_file(os.fsdecode(path), _reading(textures, keep_coplanar, show_backs, progress))
        return self

    def replace_file(self, file: int | PathLike, path: PathLike | None = None, *, textures: bool = True,
                     keep_coplanar: bool = False, show_backs: bool = True,
                     progress: Callable[[float], object] | None = None) -> Model:
        """Puts a file in the place of one of :attr:`files`. What was added below the nodes of that one goes.

        :param file: its place, or the path that it was opened by.
        :param path: the same file, as it is now, if not given.
        :raises FileError: with the reason and the remedy; the model stays as it was.
        """
        with self._files_lock:
            place = self._file(file)
            new = self.files[place] if path is None else os.fsdecode(path)
            self._native.replace_file(place, new, _reading(textures, keep_coplanar, show_backs, progress,
                                                           alone=len(self.files) == 1))
        return self

    def remove_file(self, file: int | PathLike) -> Model:
        """Takes one of :attr:`files` out, with what was added below its nodes.

        :param file: as for :meth:`replace_file`.
        """
        with self._files_lock:
            self._native.remove_file(self._file(file))
        return self

    def _file(self, file: int | PathLike) -> int:
        files = self.files
        if isinstance(file, (str, bytes, os.PathLike)):
            path = os.fsdecode(file)
            if path not in files:
                raise NodeError(f"there is no file {path!r} in the model; those that there are: "
                                + (", ".join(files) or "none"))
            return files.index(path)
        place = _words.whole(file, "file")
        if not -len(files) <= place < len(files):
            raise ValueError(f"file is {place}; the model has {len(files)} files")
        return place % len(files)

    # Settings

    def set(self, **settings: Unpack[Settings]) -> Model:
        """Changes settings, all of them or none.

        Every field of the settings is a keyword: ``look``, ``sky``, ``lines``, ``section``, ``view`` and so on, see
        :class:`Settings`. A dict changes only the fields that it names, ``True`` switches on what has fields of
        its own (``lines=True``), ``False`` off, and ``None`` gives back what is usual (``section=None``). Names of
        fields may be written as in JSON too, and colours by plain names.

        :raises SettingsError: naming the field and its bound.
        """
        if settings:
            with self._lock:
                merged = _words.merge(json.loads(self._native.settings()), settings)
                self._native.apply(_words.to_json(merged))
        return self

    @property
    def settings(self) -> dict[str, Any]:
        """All settings as they are now, a copy; ``model.set(**other.settings)`` takes them over."""
        found = _words.pythonic(json.loads(self._native.settings()))
        assert isinstance(found, dict)
        return found

    def look(self, name: str) -> Model:
        """Chooses how surfaces are drawn, such as ``"advanced"``, ``"crosshatch"`` or ``"monotone"``."""
        return self.set(look=name)  # type: ignore[arg-type]

    # The view

    def view(self, name: str) -> Model:
        """Looks at all of the model from a direction: ``"iso"``, ``"front"``, ``"top"`` and so on."""
        return self.set(view={"named": name, "eye": None, "target": None})  # type: ignore[typeddict-item]

    def look_at(self, eye: ArrayLike, target: ArrayLike, up: ArrayLike | None = None) -> Model:
        """Looks from one place in the world to another.

        :param eye: shape (3,), as are the others.
        :param up: a direction of any length above 0; None for the axis that is up.
        """
        upwards = None if up is None else _words.triple(up, "up")
        self._native.set_camera(_words.triple(eye, "eye"), _words.triple(target, "target"), upwards)
        return self

    def frame(self, node: str | Node | None = None) -> Model:
        """Brings the whole model into the view, or a node with what is below it, without turning.

        :raises ValueError: where there is nothing to see.
        """
        seen = self._native.frame_all() if node is None else self._native.frame_node(self._path(node))
        return self._framed(seen)

    def frame_shown(self) -> Model:
        """Brings what is neither hidden nor cut away into the view, without turning."""
        return self._framed(self._native.frame_shown())

    def _framed(self, seen: bool) -> Model:
        if not seen:
            raise ValueError("there is nothing to see that the view could go to")
        return self

    @property
    def camera(self) -> Camera:
        """Where the model is looked at from now."""
        eye, target, up = (tuple(part) for part in self._native.camera())
        return Camera(eye, target, up)  # type: ignore[arg-type]

    @property
    def box(self) -> NDArray[np.float32] | None:
        """Shape (2, 3): the least and the greatest corner of all meshes in the world; None of an empty model."""
        return self._native.box()

    @property
    def shown_box(self) -> NDArray[np.float32] | None:
        """As :attr:`box`, of what is neither hidden nor cut away."""
        return self._native.shown_box()

    # Nodes

    def _path(self, node: str | Node) -> str:
        if not isinstance(node, Node):
            return _words.text(node, "the node")
        if node.model is not self:
            raise ValueError("the node is in another model")
        return node.path

    @property
    def nodes(self) -> list[str]:
        """The paths of all nodes that have names: the names from the root down, with slashes between them."""
        return self._native.list_nodes()

    def node(self, path: str) -> Node:
        """Finds a node by its path, which may begin at any node above it.

        :raises NodeError: with some that there are.
        """
        return Node(self, self._native.find_node(_words.text(path, "path")))

    def hide(self, node: str | Node) -> Model:
        """Hides a node with all that is below it."""
        self._native.hide(self._path(node))
        return self

    def show(self, node: str | Node) -> Model:
        """Takes :meth:`hide` back for this node."""
        self._native.show(self._path(node))
        return self

    def isolate(self, node: str | Node) -> Model:
        """Hides all but a node with what is below it."""
        self._native.isolate(self._path(node))
        return self

    def show_all(self) -> Model:
        """Takes every :meth:`hide` and :meth:`isolate` back."""
        self._native.show_all()
        return self

    def highlight(self, node: str | Node, color: ColorLike = (1.0, 0.5, 0.0, 0.5)) -> Model:
        """Lays a colour over a node with what is below it.

        :param color: its alpha is how much of it is seen.
        """
        self._native.highlight(self._path(node), _words.color(color))
        return self

    def clear_highlight(self, node: str | Node | None = None) -> Model:
        """Takes :meth:`highlight` back, for one node or for all."""
        self._native.clear_highlight(None if node is None else self._path(node))
        return self

    # Building

    def add_material(self, name: str = "", *, color: ColorLike | None = None, opacity: float | None = None,
                     specular: ColorLike | None = None, emissive: ColorLike | None = None,
                     shininess: float | None = None, two_sided: bool | None = None, unlit: bool | None = None,
                     texture: Any = None) -> Material:
        """Adds a material.

        :param color: ``"#rrggbb"``, a plain name, or 3 or 4 numbers of 0 to 1; white if not given.
        :param opacity: 0 to 1, in place of the fourth number.
        :param specular: of the highlight.
        :param emissive: what the surface shows without light.
        :param shininess: the exponent of the highlight, 0 to 1000.
        :param two_sided: whether backs of faces are seen.
        :param unlit: whether it is drawn as if there were no light.
        :param texture: a PNG or JPEG file, or an array of shape (height, width), (height, width, 3) or
            (height, width, 4), uint8 or floats of 0 to 1, the top row first. Copied.
        """
        given = {"color": color, "opacity": opacity, "specular": specular, "emissive": emissive,
                 "shininess": shininess, "two_sided": two_sided, "unlit": unlit, "texture": texture}
        return Material(self, self._native.add_material(_words.word(name, "name"), material_values(given)))

    def material(self, name: str) -> Material:
        """Finds a material by its name.

        :raises NodeError: if there is none.
        """
        return Material(self, self._native.find_material(_words.text(name, "name")))

    def _surface(self, material: Material | None) -> int:
        if material is None:
            if self._default is None:
                self._default = self.add_material("default", color=(0.8, 0.8, 0.8))
            material = self._default
        if not isinstance(material, Material):
            raise TypeError(f"material is {material!r}; it has to be one of add_material() or material()")
        if material._model is not self:
            raise ValueError("the material is in another model")
        return material._number

    def _parent(self, parent: Node | None) -> int | None:
        if parent is None:
            return None
        if self._own(parent, "parent").model is not self:
            raise ValueError("the node above is in another model")
        return parent._number

    @staticmethod
    def _own(node: Node, name: str) -> Node:
        if not isinstance(node, Node):
            raise TypeError(f"{name} is {node!r}; it has to be a node, such as of node()")
        return node

    def add_group(self, name: str = "", *, parent: Node | None = None, transform: ArrayLike | None = None) -> Node:
        """Adds a node that shows nothing, for others to stand below.

        :param name: without a slash. Where another node has it, a number is put behind it.
        :param parent: the node above; the root if not given.
        :param transform: shape (4, 4) for column vectors, to the space of the node above, or (3,) for a shift.
        """
        return Node(self, self._native.add_group(_name(name), self._parent(parent), _arrays.transform(transform)))

    def add_mesh(self, positions: ArrayLike | Geometry | Sequence[Geometry], triangles: ArrayLike | None = None, *,
                 normals: ArrayLike | None = None, uvs: ArrayLike | None = None, colors: ArrayLike | None = None,
                 material: Material | None = None, crease: float = 35.0, name: str = "",
                 parent: Node | None = None, transform: ArrayLike | None = None) -> Node:
        """Adds triangles, of any number.

        Arrays are copied once, into the memory of the engine; float32 in rows without gaps goes there directly. To
        fill that memory in place, see :meth:`Geometry.allocate`.

        :param positions: shape (n, 3), finite, in the units of the model; or geometry that there is already.
        :param triangles: shape (m, 3), whole numbers below n, counter-clockwise from the front; without them the
            positions three by three.
        :param normals: shape (n, 3), of length 1. Without them they are made, smooth where faces that share a
            vertex bend less than ``crease``.
        :param uvs: shape (n, 2), u to the right and v upwards, 0 to 1 across the texture.
        :param colors: shape (n, 3) or (n, 4), 0 to 1, or uint8; seen in the look ``vertex-color``.
        :param material: light grey if not given.
        :param crease: in degrees, 0 to 180.
        :param name: as for :meth:`add_group`, as are ``parent`` and ``transform``.
        """
        if isinstance(positions, Geometry):
            parts = [positions]
        elif isinstance(positions, (list, tuple)) and positions and all(isinstance(part, Geometry) for part in positions):
            parts = list(positions)
        else:
            places = _arrays.rows(positions, 3, "positions")
            parts = [Geometry(part) for part in _native.make_geometry(
                places, _arrays.triangles(triangles, len(places)), _arrays.optional_rows(normals, 3, "normals"),
                _arrays.optional_rows(uvs, 2, "uvs"), _arrays.colors(colors),
                _words.number(crease, "crease", 0, 180))]
        natives = [part._native for part in parts]
        for part in natives:
            self._native.update(part)
        number = self._native.add_mesh(natives, self._surface(material), _name(name), self._parent(parent),
                                       _arrays.transform(transform))
        return Node(self, number, tuple(parts))

    def add_copy(self, node: Node, *, name: str = "", parent: Node | None = None,
                 transform: ArrayLike | None = None) -> Node:
        """Shows what was added at a node at another place too, without a copy of it."""
        if self._own(node, "node").model is not self:
            raise ValueError("the node is in another model")
        number = self._native.add_copy(node._number, _name(name), self._parent(parent), _arrays.transform(transform))
        return Node(self, number, node.geometry)

    def add_line(self, points: ArrayLike, *, closed: bool = False, color: ColorLike = "black", width: float = 1.0,
                 dash: float | None = None, on_top: bool = False, name: str = "", parent: Node | None = None,
                 transform: ArrayLike | None = None) -> Node:
        """Adds a line through points.

        :param points: shape (n, 3), two or more.
        :param closed: whether the last point is joined to the first.
        :param width: of all of it, in pixels, above 0 and at most 100.
        :param dash: pixels of a dash and of the gap after it.
        :param on_top: whether it is seen through what is before it.
        """
        rows = _arrays.rows(points, 3, "points")
        if not np.isfinite(rows).all():
            raise ValueError("points holds a coordinate that is not finite; every one has to be")
        number = self._native.add_line(
            rows, bool(closed), _words.color(color), _words.number(width, "width", 0.01, 100),
            None if dash is None else _words.number(dash, "dash", 0.01, 10000), bool(on_top), _name(name),
            self._parent(parent), _arrays.transform(transform))
        return Node(self, number)

    def add_text(self, text: str, x: int = 16, y: int = 16, *, size: int = 16, color: ColorLike = "black",
                 font: str = "DejaVu Sans") -> Text:
        """Writes a text over the picture.

        :param x: pixels from the left of the picture to the text; below 0 from the right.
        :param y: pixels from the top of the picture to the text; below 0 from the bottom.
        :param size: of the letters, in pixels, 1 to 512.
        """
        return self._add_text(text, size, color, font, _words.whole(x, "x"), _words.whole(y, "y"), None, None)

    def add_label(self, text: str, at: Node | ArrayLike, *, size: int = 16, color: ColorLike = "black",
                  font: str = "DejaVu Sans") -> Text:
        """Writes a text over the picture that stays, with its middle, at a node or at a place in the world.

        :param at: a node, or shape (3,).
        :param size: of the letters, in pixels, 1 to 512.
        """
        if isinstance(at, Node):
            if at.model is not self:
                raise ValueError("the node is in another model")
            return self._add_text(text, size, color, font, 0, 0, at._number, None)
        return self._add_text(text, size, color, font, 0, 0, None, _words.triple(at, "at"))

    def _add_text(self, text: str, size: int, color: ColorLike, font: str, x: int, y: int, node: int | None,
                  place: tuple[float, float, float] | None) -> Text:
        height = int(_words.number(_words.whole(size, "size"), "size", 1, 512))
        number = self._native.add_text(_words.word(text, "text"), _words.word(font, "font"), height, _words.color(color), x, y,
                                       node, place)
        return Text(self, number)

    def refresh(self, *geometry: Geometry) -> Model:
        """Tells that the arrays of these were written to; boxes, edges and sections follow.

        :raises ValueError: for geometry in another model, and where a coordinate is not finite.
        """
        for part in geometry:
            if not isinstance(part, Geometry):
                raise TypeError(f"{part!r} is no geometry; node.geometry has what was added at a node")
        for part in geometry:
            self._native.update(part._native)
        return self

    # Pictures

    def picture(self, width: int = 1280, height: int = 720, *, transparent: bool = False,
                pixel_ratio: float = 1.0) -> NDArray[np.uint8]:
        """Draws a picture.

        :param transparent: leaves the background out, for a fourth channel that tells how much is covered.
        :param pixel_ratio: pixels for each of a line's width and the like, 0.5 to 8.
        :returns: shape (height, width, 3), red, green and blue, the top row first; (height, width, 4) if transparent.
        :raises ValueError: for a size that GL cannot make, with the sizes that it can.
        """
        return self._native.picture(_words.whole(width, "width"), _words.whole(height, "height"), bool(transparent),
                                    _words.number(pixel_ratio, "pixel_ratio", 0.5, 8))

    def png(self, width: int = 1280, height: int = 720, *, transparent: bool = False,
            pixel_ratio: float = 1.0) -> bytes:
        """Draws a picture into the bytes of a PNG file, as :meth:`picture` does."""
        return _native.pack_png(self.picture(width, height, transparent=transparent, pixel_ratio=pixel_ratio))

    def save(self, path: PathLike, width: int = 1280, height: int = 720, *, transparent: bool = False,
             pixel_ratio: float = 1.0, bits: int = 8, dpi: float | None = None,
             progress: Callable[[float], object] | None = None) -> Model:
        """Draws a picture into a PNG or JPEG file, by its ending, which is complete or not there.

        :param width: up to 65535 pixels, as is ``height``; what GL cannot draw at once is drawn in tiles.
        :param transparent: as for :meth:`picture`, as is ``pixel_ratio``; a PNG alone can be.
        :param bits: of a channel, 8 or 16.
        :param dpi: pixels an inch in print, written to the file, 1 to 10000.
        :param progress: called now and then with the share that is drawn, 0 to 100; ``False`` as an answer ends it,
            and so does what it raises.
        :raises FileError: with the reason and the remedy.
        """
        if _words.whole(bits, "bits") not in (8, 16):
            raise ValueError(f"bits is {bits}; a channel has 8 or 16")
        self._native.save(os.fsdecode(path), _words.whole(width, "width"), _words.whole(height, "height"),
                          bool(transparent), _words.number(pixel_ratio, "pixel_ratio", 0.5, 8), int(bits),
                          _pixels_per_metre(dpi), progress)
        return self

    def _repr_png_(self) -> bytes | None:
        return None if self.closed else self.png(*_SHOWN_SIZE)

    def pick(self, x: int, y: int, *, width: int = 1280, height: int = 720) -> Hit | None:
        """Finds what is seen at a pixel of a picture of that size; None for the background."""
        hits = self.pick_area(x, y, 1, 1, width=width, height=height)
        return hits[0] if hits else None

    def pick_area(self, x: int, y: int, area_width: int, area_height: int, *, width: int = 1280,
                  height: int = 720) -> list[Hit]:
        """Finds all that is seen in a rectangle of pixels, the nearest first."""
        area = [_words.whole(value, name) for value, name in
                ((x, "x"), (y, "y"), (area_width, "area_width"), (area_height, "area_height"))]
        return self._hits(self._native.pick(area[0], area[1], area[2], area[3], _words.whole(width, "width"),
                                            _words.whole(height, "height")))

    def pick_through(self, x: int, y: int, *, most: int = 16, width: int = 1280, height: int = 720) -> list[Hit]:
        """Finds what is seen at a pixel and what is behind it, the nearest first.

        :param most: of them, 1 to 1000, each of which takes a drawing.
        """
        count = int(_words.number(_words.whole(most, "most"), "most", 1, 1000))
        return self._hits(self._native.pick_through(_words.whole(x, "x"), _words.whole(y, "y"), count,
                                                    _words.whole(width, "width"), _words.whole(height, "height")))

    def _hits(self, found: list[Any]) -> list[Hit]:
        return [Hit(Node(self, node), path, mesh, depth, (position[0], position[1], position[2]), x, y)
                for node, path, mesh, depth, position, x, y in found]

    # Notes on the picture

    def add_distance(self, start: ArrayLike, end: ArrayLike) -> Model:
        """Draws the distance of two places as a dimension line.

        :param start: shape (3,) in world space, as is ``end``.
        """
        return self._dimension(start, end)

    def add_angle(self, start: ArrayLike, at: ArrayLike, end: ArrayLike) -> Model:
        """Draws the angle between two places as it is seen from a third.

        :param start: shape (3,) in world space, as are ``at`` and ``end``.
        """
        return self._dimension(start, at, end)

    def _dimension(self, *points: ArrayLike) -> Model:
        new = np.array([_words.triple(point, "a point of the dimension") for point in points], np.float64)
        with self._lock:
            self._native.set_dimensions([known.points for known in self.dimensions] + [new])
        return self

    @property
    def dimensions(self) -> list[Dimension]:
        """The distances and angles that stand on the picture, in the order of their adding."""
        return [Dimension(points, value, text) for points, value, text in self._native.dimensions()]

    def clear_dimensions(self) -> Model:
        """Takes every :meth:`add_distance` and :meth:`add_angle` back."""
        self._native.set_dimensions([])
        return self

    def label(self, node: str | Node, text: str = "") -> Model:
        """Writes a text at a node with what is below it, which follows it; not while all of that is hidden.

        :param text: the name of the node if not given, without what only programs read. A second one takes the
            place of the first.
        """
        self._native.label(self._path(node), _words.word(text, "text"))
        return self

    def clear_label(self, node: str | Node | None = None) -> Model:
        """Takes :meth:`label` back, for one node or for all."""
        self._native.clear_label(None if node is None else self._path(node))
        return self

    # The sun

    @property
    def sun(self) -> Sun | None:
        """Where the sun of the settings stands; None without one."""
        found = self._native.sun()
        if found is None:
            return None
        direction, azimuth, elevation = found
        return Sun(None if direction is None else (direction[0], direction[1], direction[2]), azimuth, elevation)

    def sun_study(self, times: str, width: int = 1280, height: int = 720) -> NDArray[np.uint8]:
        """Draws a sheet of pictures, one for each time. The settings need a sun by time.

        :param times: first, last and step, such as ``"2026-03-20T09:00+01:00/17:00/1h"``.
        :param width: of the whole sheet, as is ``height``.
        :returns: as :meth:`picture`.
        """
        return self._native.sun_study(_words.word(times, "times"), _words.whole(width, "width"),
                                      _words.whole(height, "height"))

    def sun_hours(self, times: str, surface: str | Node = "ground") -> SunHours:
        """Counts how long the sun shines, and shows it as a coloured map until :meth:`clear_sun_hours`.

        The map is of the model as it is now. The settings need a sun by time.

        :param times: as for :meth:`sun_study`.
        :param surface: ``"ground"`` for a plane under the model, or a node with what is below it.
        """
        positions, hours, most = self._native.sun_hours(_words.word(times, "times"), self._path(surface))
        return SunHours(positions, hours, most)

    def clear_sun_hours(self) -> Model:
        """Takes the map of :meth:`sun_hours` away."""
        self._native.clear_sun_hours()
        return self

    # The rest

    @property
    def report(self) -> dict[str, Any]:
        """What the file held: counts, its unit of length in metres (0 if it does not say), and warnings."""
        return self._native.report()

    @property
    def statistics(self) -> dict[str, int]:
        """How much the model holds, and how much the last picture drew."""
        return self._native.statistics()

    @property
    def closed(self) -> bool:
        """Whether :meth:`close` was called."""
        return self._native.is_closed()

    def close(self) -> None:
        """Lets go of everything now rather than with the last reference. A second time it does nothing."""
        self._native.close()

    def __enter__(self) -> Model:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def __repr__(self) -> str:
        try:
            return "<orvane.Model, closed>" if self.closed else f"<orvane.Model of {self.report['meshes']} meshes>"
        except Exception:
            return "<orvane.Model>"


def _name(value: str) -> str:
    if "/" in _words.word(value, "name"):
        raise ValueError(f"name is {value!r}; a slash parts the names in a path, so that none holds one")
    return value
