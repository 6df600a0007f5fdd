"""Several files in one model, what stands on its picture, and what its sun does."""

import threading

import numpy as np
import pytest
from conftest import CORNERS, FACES, OBJ, WHITE

import orvane

SUN = {"time": "2026-06-21T15:00+02:00", "place": {"latitude": 52.52, "longitude": 13.40}}
DAY = "2026-06-21T09:00+02:00/17:00/1h"


@pytest.fixture
def files(tmp_path):
    made = []
    for number, shift in enumerate((0, 10, 20)):
        path = tmp_path / f"{number}.obj"
        path.write_text("\n".join(f"v {float(line.split()[1]) + shift} {' '.join(line.split()[2:])}"
                                  if line.startswith("v ") else line for line in OBJ.splitlines()))
        made.append(str(path))
    return made


def width(model):
    return float(model.box[1, 0] - model.box[0, 0])


def test_files_stand_beside_each_other(files):
    model = orvane.open(files[0], files[1])
    assert model.files == files[:2]
    assert width(model) == 14
    assert model.add_file(files[2]) is model
    assert model.files == files and width(model) == 24
    assert model.remove_file(files[1]).files == [files[0], files[2]]
    assert model.remove_file(-1).files == [files[0]] and width(model) == 4


def test_a_file_is_read_again(files, tmp_path):
    model = orvane.open(files[0], files[1])
    (tmp_path / "1.obj").write_text((tmp_path / "2.obj").read_text())
    assert width(model.replace_file(files[1])) == 24
    assert model.replace_file(0, files[2]).files == [files[2], files[1]] and width(model) == 4


def test_a_file_that_is_refused_changes_nothing(files, tmp_path):
    model = orvane.open(files[0])
    broken = tmp_path / "broken.glb"
    broken.write_bytes(b"glTF and no more")
    for act in (lambda: model.add_file(broken), lambda: model.replace_file(0, broken),
                lambda: model.add_file(tmp_path / "none.obj"), lambda: orvane.open(files[0], broken)):
        with pytest.raises(orvane.FileError, match="broken.glb|none.obj"):
            act()
    assert model.files == files[:1] and width(model) == 4
    with pytest.raises(orvane.NodeError, match="no file 'x.obj' in the model; those that there are: .*0.obj"):
        model.remove_file("x.obj")
    for place in (1, -2, 10**12):
        with pytest.raises(ValueError, match="the model has 1 files"):
            model.remove_file(place)
    with pytest.raises(TypeError):
        model.remove_file(None)


def test_faces_that_look_opposite_ways_are_left_alone_where_no_backs_show(tmp_path):
    path = tmp_path / "sheets.obj"
    path.write_text("o wall\nv -5 -5 0\nv 5 -5 0\nv 0 5 0\nf 1 2 3\no board\nv -1 -1 0\nv 1 -1 0\nv 0 1 0\nf 4 6 5\n")
    for model in (orvane.open(path, path), orvane.open(path).add_file(path), orvane.open(path, path).replace_file(0)):
        assert model.report["coplanar_pairs"] == 2
    for model in (orvane.open(path, path, show_backs=False), orvane.open(path, show_backs=False).add_file(path, show_backs=False),
                  orvane.open(path, path, show_backs=False).replace_file(0, show_backs=False)):
        assert model.report["coplanar_pairs"] == 0
    assert orvane.open(path, keep_coplanar=True).report["coplanar_pairs"] == 0


def test_what_was_added_below_a_file_goes_with_it(files):
    model = orvane.open(files[0], files[1], view={"named": "front"})
    top = model.node(model.nodes[0])
    below = model.add_mesh(CORNERS, FACES, name="below", parent=top)
    kept = model.add_copy(model.add_mesh(CORNERS, FACES, name="kept"), transform=(5, 0, 0))
    for _ in range(20):
        model.add_mesh(CORNERS, FACES, name="alone", parent=top)
    both = model.add_copy(below, name="copy", transform=(40, 0, 0))
    model.picture(64, 64)
    model.remove_file(0)
    model.picture(64, 64)
    assert "copy" in model.nodes and "kept" in model.nodes and not any("below" in path or "alone" in path for path in model.nodes)
    with pytest.raises(orvane.ClosedError):
        below.path
    # A mesh that another node shows stays; one that goes with the file is forgotten.
    model.add_copy(both, transform=(50, 0, 0))
    model.remove_file(0)
    both.remove()
    kept.remove()
    model.picture(64, 64)
    assert model.files == []


def test_threads_take_turns_with_files(files):
    model = orvane.open(files[0])
    trouble = []

    def work(path):
        try:
            for _ in range(3):
                model.add_file(path).replace_file(0).remove_file(-1)
        except Exception as error:
            trouble.append(error)

    threads = [threading.Thread(target=work, args=(path,)) for path in files]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not trouble and len(model.files) == 1


def test_files_come_to_a_scene_of_arrays(cube, files):
    cube.add_file(files[1])
    assert width(cube) == 13
    assert "cube" in cube.nodes
    cube.remove_file(0)
    assert width(cube) == 2


def test_dimensions_stand_on_the_picture(cube):
    plain = cube.picture(320, 240)
    cube.add_distance((-1, 1, 1), (1, 1, 1)).add_angle((1, 0, 0), (0, 0, 0), (0, 1, 0))
    distance, angle = cube.dimensions
    assert (distance.value, distance.text) == (2, "2") and distance.points.shape == (2, 3)
    assert angle.value == pytest.approx(90) and angle.text == "90°" and angle.points.tolist()[1] == [0, 0, 0]
    assert (cube.picture(320, 240) != plain).any()
    assert cube.clear_dimensions().dimensions == []
    assert (cube.picture(320, 240) == plain).all()
    for points in ([(0, 0), (1, 1)], [(0, 0, 0), (np.inf, 0, 0)], [(0, 0, 0), (1, 0, np.nan)]):
        with pytest.raises(ValueError, match="a point of the dimension"):
            cube.add_distance(*points)
    with pytest.raises(TypeError):
        cube.add_distance("here", "there")
    assert cube.dimensions == []


def test_labels_follow_nodes(cube):
    plain = cube.picture(320, 240)
    assert cube.label("cube", "A cube") is cube
    assert (cube.picture(320, 240) != plain).any()
    cube.hide("cube")
    assert (cube.picture(320, 240) == WHITE).all()
    cube.show("cube").clear_label("cube")
    assert (cube.picture(320, 240) == plain).all()
    cube.label(cube.node("cube")).clear_label()
    assert (cube.picture(320, 240) == plain).all()
    with pytest.raises(orvane.NodeError, match="no node 'tower'; some that there are: cube"):
        cube.label("tower")


def test_the_sun_of_the_settings(cube):
    assert cube.sun is None
    cube.set(sun=SUN)
    assert cube.sun.azimuth == pytest.approx(226.9, abs=1) and cube.sun.elevation == pytest.approx(53.5, abs=1)
    assert np.linalg.norm(cube.sun.direction) == pytest.approx(1)
    cube.set(sun={**SUN, "time": "2026-06-21T01:00+02:00"})
    assert cube.sun.direction is None and cube.sun.elevation < 0
    cube.set(sun={"direction": (0, 1, 0), "place": None})
    assert cube.sun == orvane.Sun((0, 1, 0), None, None)


def test_a_sun_study_is_a_picture(cube):
    cube.set(sun=SUN, shadows=True)
    sheet = cube.sun_study(DAY, 300, 200)
    assert sheet.shape == (200, 300, 3) and sheet.dtype == np.uint8
    assert (sheet != WHITE).any()


def test_hours_of_sun_are_arrays_and_a_map(cube):
    cube.set(sun=SUN, view={"named": "top"})
    plain = cube.picture(160, 120)
    hours = cube.sun_hours(DAY)
    assert hours.positions.shape == (len(hours.hours), 3) and hours.most == 8
    assert hours.hours.min() == 0 and hours.hours.max() == 8  # under the cube, and far from it
    assert (cube.picture(160, 120) != plain).any()
    assert (cube.clear_sun_hours().picture(160, 120) == plain).all()
    top = cube.sun_hours(DAY, cube.node("cube"))
    above = top.positions[:, 1] > 0.99
    assert above.any() and (top.hours[above] == 8).all()
    cube.close()


def test_what_is_wrong_with_a_study_is_told(cube):
    with pytest.raises(ValueError, match="sun"):
        cube.sun_study(DAY)
    with pytest.raises(ValueError, match="sun"):
        cube.sun_hours(DAY)
    cube.set(sun=SUN)
    for times in ("", "noon", "2026-06-21T09:00/08:00/1h", "2026-06-21T09:00/17:00/0h"):
        with pytest.raises(ValueError, match="times is "):
            cube.sun_study(times)
        with pytest.raises(ValueError, match="times is "):
            cube.sun_hours(times)
    with pytest.raises(ValueError, match="tower"):
        cube.sun_hours(DAY, "tower")
    with pytest.raises(ValueError, match="no pixels"):
        cube.sun_study(DAY, 0, 10)
    cube.close()
    for act in (lambda: cube.files, lambda: cube.sun, lambda: cube.dimensions, lambda: cube.sun_hours(DAY),
                lambda: cube.add_distance((0, 0, 0), (1, 0, 0)), lambda: cube.label("cube"), cube.clear_sun_hours):
        with pytest.raises(orvane.ClosedError):
            act()


def test_the_ending_of_a_picture_tells_its_format(cube, tmp_path):
    cube.save(tmp_path / "cube.jpg", 64, 64)
    assert (tmp_path / "cube.jpg").read_bytes()[:3] == b"\xff\xd8\xff"
    with pytest.raises(orvane.FileError, match="cube.bmp"):
        cube.save(tmp_path / "cube.bmp", 64, 64)
