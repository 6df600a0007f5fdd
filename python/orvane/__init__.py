"""Orvane draws design models: buildings and products, lit and textured, with lines, sections and sketch looks.

>>> import orvane
>>> orvane.open("house.ifc").look("crosshatch").save("house.png")

A :class:`Model` is a file that was opened, or one that is built from arrays. Settings are keywords, a picture is a
NumPy array, and in a notebook a model shows itself. No window and no display are needed.

Any thread may use any model; one of them is served at a time, and the others of the interpreter go on. A process
that is forked after the first use cannot go on using it: start processes by the method ``spawn``.
"""

from ._errors import ClosedError, ContextError, Error, FileError, NodeError, SettingsError
from ._model import Model, formats, open, save_picture
from ._native import version as __version__
from ._scene import Camera, Dimension, Geometry, Hit, Material, Node, Sun, SunHours, Text
from ._settings import Settings

__all__ = [
    "Camera", "ClosedError", "ContextError", "Dimension", "Error", "FileError", "Geometry", "Hit", "Material", "Model",
    "Node", "NodeError", "Settings", "SettingsError", "Sun", "SunHours", "Text", "formats", "open", "save_picture",
    "__version__",
]
