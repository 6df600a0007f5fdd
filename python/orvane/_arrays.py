"""Arrays in the layout of the engine: what has it already is taken as it is."""

from __future__ import annotations

from typing import Any

import numpy as np
from numpy.typing import NDArray

Floats = NDArray[np.float32]


def _numeric(value: Any, name: str) -> NDArray[Any]:
    try:
        array = np.asarray(value)
    except ValueError as trouble:
        raise ValueError(f"{name} is no array: {trouble}") from None
    if array.size == 0:
        return np.empty((0, 0), np.float32)
    if array.dtype.kind not in "fiu":
        raise TypeError(f"{name} has the type {array.dtype}; it has to be numbers")
    return array


def rows(value: Any, columns: int, name: str) -> Floats:
    """Gives n rows of floats; float32 in rows without gaps is not copied here."""
    array = _numeric(value, name)
    if array.size and (array.ndim != 2 or array.shape[1] != columns):
        raise ValueError(f"{name} has the shape {array.shape}; it has to be (n, {columns})")
    with np.errstate(over="ignore"):  # infinity is refused by name
        return np.ascontiguousarray(array, np.float32)


def optional_rows(value: Any, columns: int, name: str) -> Floats:
    """Gives n rows of floats, or no rows for None."""
    return np.empty((0, 0), np.float32) if value is None else rows(value, columns, name)


def triangles(value: Any, vertices: int) -> NDArray[np.uint32]:
    """Gives m rows of three vertices; None takes the vertices three by three."""
    if value is None:
        if vertices % 3:
            raise ValueError(f"positions holds {vertices}; without triangles it has to be three for each")
        return np.arange(vertices, dtype=np.uint32).reshape(-1, 3)
    array = _numeric(value, "triangles")
    if array.size == 0:
        return np.empty((0, 3), np.uint32)
    if array.dtype.kind == "f":
        raise TypeError(f"triangles has the type {array.dtype}; it has to be whole numbers")
    if array.ndim != 2 or array.shape[1] != 3:
        raise ValueError(f"triangles has the shape {array.shape}; it has to be (m, 3)")
    wrong = np.flatnonzero(((array < 0) | (array >= vertices)).any(axis=1))
    if wrong.size:
        row = array[wrong[0]]
        index = int(row[(row < 0) | (row >= vertices)][0])
        raise ValueError(f"triangles[{wrong[0]}] names vertex {index}; there are {vertices}")
    return np.ascontiguousarray(array, np.uint32)


def colors(value: Any) -> Floats:
    """Gives n rows of red, green, blue and alpha; bytes count from 0 to 255, and alpha may be left out."""
    if value is None:
        return np.empty((0, 0), np.float32)
    array = _numeric(value, "colors")
    if array.size == 0:
        return np.empty((0, 0), np.float32)
    if array.ndim != 2 or array.shape[1] not in (3, 4):
        raise ValueError(f"colors has the shape {array.shape}; it has to be (n, 3) or (n, 4)")
    scaled = array / np.float32(255) if array.dtype == np.uint8 else array
    if not ((scaled >= 0) & (scaled <= 1)).all():
        raise ValueError("colors holds a channel out of range; it has to be 0 to 1, or 0 to 255 as uint8")
    full = np.ones((len(array), 4), np.float32)
    full[:, :array.shape[1]] = scaled
    return full


def transform(value: Any) -> NDArray[np.float64]:
    """Gives a matrix of four rows: the identity for None, a shift for three numbers."""
    if value is None:
        return np.eye(4)
    array = _numeric(value, "transform")
    if array.shape == (3,):
        shift = np.eye(4)
        shift[:3, 3] = array
        return shift
    if array.shape != (4, 4):
        raise ValueError(f"transform has the shape {array.shape}; it has to be (4, 4), or (3,) for a shift")
    return np.ascontiguousarray(array, np.float64)


def picture(value: Any, name: str = "texture") -> NDArray[np.uint8]:
    """Gives a picture of bytes; floats count from 0 to 1."""
    array = np.asarray(value)
    if array.dtype.kind == "f":
        if not ((array >= 0) & (array <= 1)).all():
            raise ValueError(f"{name} holds a channel out of range; it has to be 0 to 1, or 0 to 255 as uint8")
        array = np.rint(array * 255).astype(np.uint8)
    if array.dtype != np.uint8:
        raise TypeError(f"{name} has the type {array.dtype}; it has to be uint8, or floats from 0 to 1")
    if array.ndim == 2:
        array = np.repeat(array[:, :, np.newaxis], 3, axis=2)
    return np.ascontiguousarray(array)
