"""What stands in a model: nodes, geometry, materials, texts."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _arrays, _native, _words

if TYPE_CHECKING:
    from ._model import Model

ColorLike = str | ArrayLike


class Geometry:
    """Triangles in the memory of the engine, at most 65,536 vertices, with arrays that look into it.

    The arrays are neither copied on the way out nor on the way back: write to them, then call
    :meth:`Model.refresh` with the geometry. They stay readable for as long as anyone holds them, also once the
    model is closed. A geometry is in one model at a time.
    """

    def __init__(self, native: _native.Geometry) -> None:
        if not isinstance(native, _native.Geometry):
            raise TypeError("geometry is made by Geometry.allocate() or add_mesh()")
        self._native = native

    @classmethod
    def allocate(cls, vertices: int, triangles: ArrayLike, *, uvs: bool = False, colors: bool = False) -> Geometry:
        """Makes geometry whose arrays are zero, to be filled in place.

        :param vertices: 1 to 65,536.
        :param triangles: shape (m, 3), whole numbers below ``vertices``; counter-clockwise from the front. Copied.
        :param uvs: whether there are texture coordinates.
        :param colors: whether there are colours of vertices.
        """
        count = _words.whole(vertices, "vertices")
        if count < 1 or count > 65536:
            raise ValueError(f"vertices is {count}; it has to be 1 to 65536")
        return cls(_native.allocate_geometry(count, _arrays.triangles(triangles, count), bool(uvs), bool(colors)))

    @property
    def positions(self) -> NDArray[np.float32]:
        """Shape (n, 3), in the units of the model; writable, no copy."""
        return self._native.positions

    @property
    def normals(self) -> NDArray[np.float32]:
        """Shape (n, 3), of length 1; writable, no copy."""
        return self._native.normals

    @property
    def uvs(self) -> NDArray[np.float32] | None:
        """Shape (n, 2), u to the right and v upwards, 0 to 1 across the picture; writable, no copy."""
        return self._native.uvs

    @property
    def colors(self) -> NDArray[np.float32] | None:
        """Shape (n, 4), red, green, blue, alpha of 0 to 1; writable, no copy."""
        return self._native.colors

    @property
    def triangles(self) -> NDArray[np.uint16]:
        """Shape (m, 3), vertices; a copy that cannot be written to."""
        return self._native.triangles

    def make_normals(self) -> Geometry:
        """Writes smooth normals of the positions: those of the triangles about a vertex, by their areas."""
        positions = self.positions.astype(np.float64)
        triangles = self.triangles.astype(np.intp)
        corners = positions[triangles]
        faces = np.cross(corners[:, 1] - corners[:, 0], corners[:, 2] - corners[:, 0])
        sums = np.zeros_like(positions)
        for corner in range(3):
            np.add.at(sums, triangles[:, corner], faces)
        lengths = np.linalg.norm(sums, axis=1, keepdims=True)
        self.normals[:] = np.where(lengths > 0, sums / np.where(lengths > 0, lengths, 1), (0, 1, 0))
        return self

    def __repr__(self) -> str:
        return f"<orvane.Geometry of {len(self.positions)} vertices, {len(self.triangles)} triangles>"


class Node:
    """A place in a model, with what is shown there. It stays usable until it is removed or the model is closed."""

    def __init__(self, model: Model, number: int, geometry: tuple[Geometry, ...] = ()) -> None:
        self._model = model
        self._number = number
        self._geometry = geometry

    @property
    def model(self) -> Model:
        """The model that the node is in."""
        return self._model

    @property
    def path(self) -> str:
        """The names from the root down to it, with slashes between them; empty for a node without a name."""
        return self._model._native.path_of(self._number)

    @property
    def geometry(self) -> tuple[Geometry, ...]:
        """What was added here as a mesh: one, or several above 65,536 vertices; empty for nodes of a file."""
        return self._geometry

    @property
    def transform(self) -> NDArray[np.float64]:
        """Shape (4, 4), for column vectors, to the space of the node above. Setting also takes (3,), a shift."""
        return self._model._native.transform_of(self._number)

    @transform.setter
    def transform(self, value: ArrayLike) -> None:
        self._model._native.set_transform(self._number, _arrays.transform(value))

    def remove(self) -> None:
        """Takes the node out of the model, with all that is below it."""
        self._model._native.remove(self._number)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Node) and (self._model, self._number) == (other._model, other._number)

    def __hash__(self) -> int:
        return hash((id(self._model), self._number))

    def __repr__(self) -> str:
        try:
            return f"<orvane.Node {self.path!r}>"
        except Exception:
            return "<orvane.Node, removed>"


def material_values(given: dict[str, Any]) -> dict[str, Any]:
    """Brings what of a material is given into the form of the engine."""
    values: dict[str, Any] = {}
    for name in ("color", "specular", "emissive"):
        if given.get(name) is not None:
            values[name] = _words.color(given[name], name)
    if given.get("opacity") is not None:
        color = values.get("color") or (1.0, 1.0, 1.0, 1.0)
        values["color"] = (*color[:3], _words.number(given["opacity"], "opacity", 0, 1))
    if given.get("shininess") is not None:
        values["shininess"] = _words.number(given["shininess"], "shininess", 0, 1000)
    for name in ("two_sided", "unlit"):
        if given.get(name) is not None:
            values[name] = bool(given[name])
    texture = given.get("texture")
    if isinstance(texture, (str, bytes, os.PathLike)):
        values["texture"] = os.fsdecode(texture)
    elif texture is not None:
        values["texture"] = None if texture is False else _arrays.picture(texture)
    return values


class Material:
    """The look of surfaces in a model."""

    def __init__(self, model: Model, number: int) -> None:
        self._model = model
        self._number = number

    def set(self, *, color: ColorLike | None = None, opacity: float | None = None,
            specular: ColorLike | None = None, emissive: ColorLike | None = None, shininess: float | None = None,
            two_sided: bool | None = None, unlit: bool | None = None, texture: Any = None) -> Material:
        """Changes what is given and keeps the rest; see :meth:`Model.add_material`. ``texture=False`` takes it away."""
        given = {"color": color, "opacity": opacity, "specular": specular, "emissive": emissive,
                 "shininess": shininess, "two_sided": two_sided, "unlit": unlit, "texture": texture}
        if opacity is not None and color is None:
            given["color"] = self._look()["color"]
        self._model._native.set_material(self._number, material_values(given))
        return self

    def _look(self) -> dict[str, Any]:
        return self._model._native.material_look(self._number)

    @property
    def name(self) -> str:
        """As it was added, or as it is in the file."""
        return str(self._look()["name"])

    @property
    def color(self) -> tuple[float, ...]:
        """Red, green, blue and opacity, 0 to 1."""
        return tuple(self._look()["color"])

    @property
    def shininess(self) -> float:
        """The exponent of the highlight; below 0 it has none of its own."""
        return float(self._look()["shininess"])

    def __repr__(self) -> str:
        try:
            return f"<orvane.Material {self.name!r}>"
        except Exception:
            return "<orvane.Material, gone>"


class Text:
    """A text over the picture."""

    def __init__(self, model: Model, number: int) -> None:
        self._model = model
        self._number = number

    def set(self, text: str) -> Text:
        """Shows another text in the same place."""
        self._model._native.set_text(self._number, _words.word(text, "text"))
        return self

    def remove(self) -> None:
        """Takes the text away."""
        self._model._native.remove_text(self._number)


@dataclass(frozen=True)
class Hit:
    """A mesh at a node, where it is seen nearest."""

    node: Node
    #: As :attr:`Node.path`.
    path: str
    #: The name of the mesh in the file; empty where it has none.
    mesh: str
    #: As in the depth buffer: 0 at the near plane, 1 at the far plane.
    depth: float
    #: In world space, in the middle of the pixel.
    position: tuple[float, float, float]
    #: From the left of the picture.
    x: int
    #: From the top of the picture.
    y: int


@dataclass(frozen=True)
class Camera:
    """Where a model is looked at from, in world space."""

    eye: tuple[float, float, float]
    target: tuple[float, float, float]
    #: The upper edge of the picture, of length 1.
    up: tuple[float, float, float]


@dataclass(frozen=True)
class Dimension:
    """A distance or an angle that stands on the picture."""

    #: Shape (2, 3) for a distance; (3, 3) for an angle, which is at the second.
    points: NDArray[np.float64]
    #: In the units of the model, or in degrees.
    value: float
    #: As it is written, with the unit where the model has one.
    text: str


@dataclass(frozen=True)
class Sun:
    """Where the sun stands."""

    #: From the model to the sun in world space, of length 1; None while it is below the horizon.
    direction: tuple[float, float, float] | None
    #: Degrees clockwise from true north; None for a sun that was given by its direction.
    azimuth: float | None
    #: Degrees above the horizon; None likewise.
    elevation: float | None


@dataclass(frozen=True)
class SunHours:
    """How long the sun shines on the pieces of a surface."""

    #: Shape (n, 3), the middles in world space.
    positions: NDArray[np.float64]
    #: Shape (n,).
    hours: NDArray[np.float32]
    #: The hours from the first to the last of the times.
    most: float
