from pathlib import Path

import numpy as np
import pytest

import orvane

#: A cube of edge 2 about the origin.
CORNERS = np.array([(x, y, z) for x in (-1, 1) for y in (-1, 1) for z in (-1, 1)], np.float32)
FACES = np.array([
    (0, 1, 3), (0, 3, 2), (4, 6, 7), (4, 7, 5), (0, 4, 5), (0, 5, 1),
    (2, 3, 7), (2, 7, 6), (0, 2, 6), (0, 6, 4), (1, 5, 7), (1, 7, 3),
])

OBJ = """
o floor
v -2 0 -2
v 2 0 -2
v 2 0 2
v -2 0 2
f 1 4 3 2
o tower
v -0.5 0 0.5
v 0.5 0 0.5
v 0.5 3 0.5
v -0.5 3 0.5
f 5 6 7 8
"""

WHITE = (255, 255, 255)


@pytest.fixture
def model_file(tmp_path: Path) -> Path:
    path = tmp_path / "house.obj"
    path.write_text(OBJ)
    return path


@pytest.fixture
def cube() -> orvane.Model:
    """A red cube, seen from the front without smoothing."""
    model = orvane.Model(look="basic", antialiasing="none", view={"named": "front"})
    model.add_mesh(CORNERS, FACES, material=model.add_material("red", color="#ff0000", unlit=True), name="cube")
    return model
