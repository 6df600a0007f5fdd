"""What the page shows runs as it stands there."""

import re
from pathlib import Path

import pytest
from conftest import OBJ

PAGE = Path(__file__).parents[2] / "docs" / "python.md"


def test_the_pieces_of_the_page_run_one_after_the_other(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    # The page opens a file of a kind that is told by its content.
    Path("house.ifc").write_text(OBJ)
    pieces = re.findall(r"```python\n(.*?)```", PAGE.read_text(), re.S)
    assert len(pieces) == 8
    names: dict[str, object] = {}
    with pytest.raises(OSError, match="house.ifc"):
        exec(pieces[0], names)  # no IFC yet
    for name in ("house.obj", "garden.obj", "car.obj"):
        Path(name).write_text(OBJ)
    for piece in pieces:
        exec(piece.replace("house.ifc", "house.obj"), names)
    assert {path.name for path in tmp_path.glob("*.png")} == {"house.png", "hills.png", "hours.png", "cutout.png", "print.png", "study.png"}
    assert Path("hills.png").stat().st_size > 10000
