"""Scenes of arrays: geometry, materials, lines, texts."""

import gc
import weakref

import numpy as np
import pytest
from conftest import CORNERS, FACES, WHITE

import orvane


def share(model, colour, size=(120, 120)):
    return (model.picture(*size) == colour).all(axis=2).mean()


@pytest.mark.parametrize("dtype", [np.float64, np.float32, np.float16, np.int32, np.int8])
def test_arrays_of_any_type_of_number_and_layout_make_the_same_picture(cube, dtype):
    expected = cube.picture(60, 60)
    for positions in (CORNERS.astype(dtype), np.asfortranarray(CORNERS.astype(dtype)),
                      CORNERS.astype(dtype)[::-1][::-1], CORNERS.astype(dtype).tolist(),
                      np.pad(CORNERS.astype(dtype), ((0, 0), (0, 5)))[:, :3]):
        model = orvane.Model(look="basic", antialiasing="none", view={"named": "front"})
        red = model.add_material(color=(1, 0, 0), unlit=True)
        model.add_mesh(positions, FACES.astype(np.uint8), material=red)
        assert (model.picture(60, 60) == expected).all()


@pytest.mark.parametrize("arguments, sentence", [
    ((CORNERS[:, :2], FACES), "positions has the shape (8, 2); it has to be (n, 3)"),
    ((CORNERS.ravel(), FACES), "positions has the shape (24,); it has to be (n, 3)"),
    ((np.float32(3), FACES), "positions has the shape ()"),
    ((CORNERS, FACES.ravel()), "triangles has the shape (36,); it has to be (m, 3)"),
    ((CORNERS, FACES + 1), "names vertex 8; there are 8"),
    ((CORNERS, FACES - 1), "triangles[0] names vertex -1; there are 8"),
    ((CORNERS, FACES + 2**40), "there are 8"),
    ((CORNERS * np.nan, FACES), "positions[0] is not finite; every coordinate has to be"),
    ((CORNERS.astype(np.float64) * 1e300, FACES), "positions[0] is not finite"),
    ((np.empty((0, 3)), FACES), "names vertex"),
    (([], []), "positions is empty; a mesh has to have vertices"),
    ((CORNERS, []), "triangles is empty; a mesh has to have some"),
    ((CORNERS, None), "positions holds 8; without triangles it has to be three for each"),
    (([[0, 0, 0], [1, 2]], FACES), "positions is no array"),
])
def test_wrong_arrays_are_refused_by_name(arguments, sentence):
    model = orvane.Model()
    with pytest.raises(ValueError) as caught:
        model.add_mesh(*arguments)
    assert sentence in str(caught.value)
    assert model.nodes == []


@pytest.mark.parametrize("arguments, keywords", [
    ((CORNERS.astype(complex), FACES), {}),
    ((CORNERS.astype(object), FACES), {}),
    ((CORNERS.astype(bool), FACES), {}),
    ((CORNERS.astype("U8"), FACES), {}),
    ((CORNERS, FACES.astype(float)), {}),
    ((None, FACES), {}),
    ((object(), FACES), {}),
    ((CORNERS, FACES), {"crease": "sharp"}),
    ((CORNERS, FACES), {"name": 3}),
])
def test_arguments_of_a_wrong_type_are_refused(arguments, keywords):
    with pytest.raises(TypeError):
        orvane.Model().add_mesh(*arguments, **keywords)


@pytest.mark.parametrize("keywords, sentence", [
    ({"normals": CORNERS[:5]}, "normals holds 5; there are 8 positions"),
    ({"uvs": np.zeros((8, 3))}, "uvs has the shape (8, 3); it has to be (n, 2)"),
    ({"colors": np.zeros((8, 5))}, "colors has the shape (8, 5)"),
    ({"colors": np.full((8, 3), 2.0)}, "colors holds a channel out of range"),
    ({"colors": np.full((8, 3), np.nan)}, "colors holds a channel out of range"),
    ({"crease": -1}, "crease is -1; it has to be 0 to 180"),
    ({"name": "a/b"}, "a slash parts the names"),
    ({"transform": np.zeros((4, 4))}, "transform is no place in space"),
    ({"transform": np.diag([1, 1, 1, 2])}, "transform is no place in space"),
    ({"transform": np.diag([1, np.inf, 1, 1])}, "transform holds a number beyond 1e15"),
    ({"transform": np.eye(3)}, "transform has the shape (3, 3)"),
])
def test_wrong_details_of_a_mesh_are_refused(keywords, sentence):
    model = orvane.Model()
    with pytest.raises(ValueError) as caught:
        model.add_mesh(CORNERS, FACES, **keywords)
    assert sentence in str(caught.value)
    assert model.nodes == []


def test_geometry_is_filled_and_changed_in_place(cube):
    red = cube.picture(100, 100)
    model = orvane.Model(look="basic", antialiasing="none", view={"named": "front"})
    geometry = orvane.Geometry.allocate(8, FACES)
    geometry.positions[:] = CORNERS
    geometry.make_normals()
    assert np.allclose(np.linalg.norm(geometry.normals, axis=1), 1)
    assert np.allclose(geometry.normals[7], np.full(3, 3**-0.5), atol=0.2)
    node = model.add_mesh(geometry, material=model.add_material(color="red", unlit=True))
    assert node.geometry == (geometry,)
    assert (model.picture(100, 100) == red).all()
    assert np.shares_memory(geometry.positions, node.geometry[0].positions)
    model.look_at((0, 0, 9), (0, 0, 0))
    before = share(model, (255, 0, 0))
    geometry.positions[:] *= 0.5
    assert share(model.refresh(geometry), (255, 0, 0)) < before / 2
    assert model.box[1].tolist() == [0.5, 0.5, 0.5]


def test_views_of_geometry_are_safe_whatever_is_done_to_them(cube):
    geometry = cube.node("cube") and cube.add_mesh(CORNERS, FACES).geometry[0]
    positions, triangles = geometry.positions, geometry.triangles
    with pytest.raises(ValueError):
        triangles[0, 0] = 60000
    triangles.flags.writeable = True
    triangles[:] = 60000  # a copy
    assert geometry.triangles.max() < len(positions)
    positions[:] = np.nan
    with pytest.raises(ValueError, match="not finite"):
        cube.refresh(geometry)
    for look in ("basic", "advanced", "crosshatch", "vertex-color"):
        cube.set(look=look, lines=True, edges=True).picture(40, 40)
    cube.set(look="advanced", section={"planes": [{}]}).picture(40, 40)
    positions[:] = 1e38
    cube.refresh(geometry).picture(40, 40)
    with pytest.raises((ValueError, TypeError)):
        positions.resize((10000, 3))
    cube.close()
    del cube, geometry
    gc.collect()
    assert positions.shape[1] == 3 and (positions == np.float32(1e38)).all()


def test_geometry_is_in_one_model_at_a_time(cube):
    geometry = orvane.Geometry.allocate(3, [[0, 1, 2]])
    geometry.positions[:] = [[0, 0, 0], [1, 0, 0], [0, 1, 0]]
    cube.add_mesh(geometry)
    other = orvane.Model()
    for use in (other.add_mesh, other.refresh):
        with pytest.raises(ValueError, match="the geometry is in another model"):
            use(geometry)
    cube.close()
    assert other.add_mesh(geometry).path == "node"
    other.picture(20, 20)


@pytest.mark.parametrize("vertices", [0, -1, 65537, 10**30])
def test_geometry_of_a_wrong_size_is_refused(vertices):
    with pytest.raises(ValueError, match="vertices is"):
        orvane.Geometry.allocate(vertices, [[0, 1, 2]])
    with pytest.raises(ValueError, match="names vertex 3"):
        orvane.Geometry.allocate(3, [[0, 1, 3]])


def test_more_vertices_than_one_mesh_takes_are_split():
    side = 300
    x, z = np.meshgrid(np.linspace(-1, 1, side), np.linspace(-1, 1, side))
    positions = np.stack([x, np.zeros_like(x), z], axis=-1).reshape(-1, 3)
    first = (np.arange(side - 1)[:, None] * side + np.arange(side - 1)).ravel()
    triangles = np.concatenate([np.stack([first, first + side, first + side + 1], axis=1),
                                np.stack([first, first + side + 1, first + 1], axis=1)])
    model = orvane.Model(look="basic", antialiasing="none", view={"named": "top"})
    node = model.add_mesh(positions, triangles, material=model.add_material(color="red", unlit=True))
    assert len(node.geometry) > 1 and model.statistics["triangles"] == len(triangles)
    red = (model.picture(100, 100) == (255, 0, 0)).all(axis=2)
    rows, columns = np.flatnonzero(red.any(axis=1)), np.flatnonzero(red.any(axis=0))
    assert red[rows[0]:rows[-1] + 1, columns[0]:columns[-1] + 1].all() and red.mean() > 0.5


def test_colours_of_vertices_show_in_their_look():
    model = orvane.Model(look="vertex-color", antialiasing="none", view={"named": "front"})
    model.add_mesh(CORNERS, FACES, colors=np.tile(np.array([0, 128, 255], np.uint8), (8, 1)))
    picture = model.picture(50, 50)
    assert tuple(picture[25, 25]) == (0, 128, 255)


def test_nodes_stand_below_others_move_are_copied_and_removed(cube):
    group = cube.add_group("group", transform=(3, 0, 0))
    child = cube.add_mesh(CORNERS, FACES, name="child", parent=group, transform=np.diag([0.5, 0.5, 0.5, 1]))
    assert child.path == "group/child" and cube.node("child") == child and len({child, cube.node("child")}) == 1
    assert cube.box[1].tolist() == [3.5, 1, 1]
    child.transform = (0, 4, 0)
    assert child.transform[:3, 3].tolist() == [0, 4, 0] and cube.box[1].tolist() == [4, 5, 1]
    copy = cube.add_copy(child, transform=(-5, 0, 0))
    assert cube.box[0].tolist() == [-6, -1, -1] and cube.statistics["meshes"] == 2
    group.remove()
    assert cube.nodes == ["cube", copy.path]
    with pytest.raises(orvane.ClosedError, match="the node has been removed"):
        child.path
    with pytest.raises(orvane.ClosedError):
        cube.add_group(parent=group)
    assert cube.box[0].tolist() == [-6, -1, -1]
    copy.remove()
    assert cube.box[0].tolist() == [-1, -1, -1] and cube.statistics["meshes"] == 1
    with pytest.raises(ValueError, match="another model"):
        orvane.Model().add_copy(cube.node("cube"))


def test_a_name_that_is_taken_gets_a_number(cube):
    paths = [cube.add_group("wall").path for _ in range(3)]
    assert len(set(paths)) == 3 and all(path.startswith("wall") for path in paths)
    for path in paths:
        assert cube.node(path).path == path


def test_what_is_added_or_removed_after_a_picture_shows_in_the_next(cube):
    cube.set(lines=True, section={"planes": [{"normal": (0, 0, 1), "position": (0, 0, 0.5)}]})
    before = cube.picture(60, 60)
    for _ in range(3):
        node = cube.add_mesh(CORNERS, FACES, transform=(2, 0, 0))
        cube.highlight(node)
        assert (cube.picture(60, 60) != before).any()
        node.remove()
        assert (cube.picture(60, 60) == before).all()


def test_materials_are_changed_and_found(cube):
    red = cube.material("red")
    assert red.color == (1, 0, 0, 1) and red.name == "red" and "red" in repr(red)
    red.set(color="#00ff00")
    assert share(cube, (0, 255, 0)) > 0.2
    red.set(opacity=0.5)
    assert red.color == (0, 1, 0, 0.5) and share(cube, (0, 255, 0)) == 0
    assert share(cube, WHITE) < 0.8
    with pytest.raises(orvane.NodeError, match="there is no material 'blue'"):
        cube.material("blue")
    for colour in ("#12", "nocolour", (1, 2, 3), (0, 0), (float("nan"), 0, 0), 7):
        with pytest.raises((ValueError, TypeError)):
            red.set(color=colour)
    for values in ({"opacity": 2}, {"shininess": -1}, {"opacity": float("nan")}):
        with pytest.raises(ValueError):
            cube.add_material(**values)


def test_textures_come_from_arrays_and_files_the_top_row_first(tmp_path):
    model = orvane.Model(look="advanced", antialiasing="none", view={"named": "front"})
    picture = np.zeros((16, 16, 3), np.uint8)
    picture[:8] = (255, 0, 0)
    picture[8:] = (0, 0, 255)
    corners = np.array([[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0]], np.float32)
    material = model.add_material(texture=picture, unlit=True)
    model.add_mesh(corners, [[0, 1, 2], [0, 2, 3]], uvs=corners[:, :2], material=material)
    seen = model.picture(100, 100)
    assert tuple(seen[30, 50]) == (255, 0, 0) and tuple(seen[70, 50]) == (0, 0, 255)
    source = orvane.Model(background="#00ff00").png(8, 8)
    (tmp_path / "green.png").write_bytes(source)
    material.set(texture=tmp_path / "green.png")
    assert tuple(model.picture(100, 100)[50, 50]) == (0, 255, 0)
    material.set(texture=False)
    assert tuple(model.picture(100, 100)[50, 50]) == (255, 255, 255)
    with pytest.raises(orvane.FileError, match="none.png"):
        material.set(texture=tmp_path / "none.png")
    for wrong in (np.zeros((2, 2, 2), np.uint8), np.zeros((0, 2, 3), np.uint8), np.zeros((20000, 1, 3), np.uint8),
                  np.full((2, 2, 3), 2.0)):
        with pytest.raises(ValueError):
            material.set(texture=wrong)
    with pytest.raises(TypeError):
        material.set(texture=np.zeros((2, 2, 3), np.int64))


def test_lines_have_a_colour_a_width_and_dashes(cube):
    line = cube.add_line([[-1, 0, 2], [1, 0, 2]], color="blue", width=6)
    full = share(cube, (0, 0, 255))
    assert full > 0.005
    line.remove()
    assert share(cube, (0, 0, 255)) == 0
    dashed = cube.add_line([[-1, 0, 2], [1, 0, 2]], color="blue", width=6, dash=4)
    assert 0 < share(cube, (0, 0, 255)) < full
    dashed.remove()
    cube.add_line([[-1, 0, -2], [1, 0, -2]], color="blue", width=6)
    assert share(cube, (0, 0, 255)) == 0
    cube.add_line([[-1, 0, -2], [1, 0, -2]], color="blue", width=6, on_top=True)
    assert share(cube, (0, 0, 255)) > 0
    for points, keywords in (([[0, 0, 0]], {}), ([[1, 1, 1], [1, 1, 1]], {}), ([], {}), ([[0, 0]], {}),
                             ([[0, 0, np.nan], [1, 1, 1]], {}), ([[0, 0, 0], [1, 1, 1]], {"width": 0}),
                             ([[0, 0, 0], [1, 1, 1]], {"dash": -1}), ([[0, 0, 0], [1, 1, 1]], {"width": np.nan})):
        with pytest.raises(ValueError):
            cube.add_line(points, **keywords)


def test_texts_stand_at_edges_and_labels_at_places(cube):
    cube.set(background="#ffff00")

    def where(model):
        dark = (model.picture(300, 200) == 0).all(axis=2)
        rows, columns = np.flatnonzero(dark.any(axis=1)), np.flatnonzero(dark.any(axis=0))
        return (columns[0], rows[0], columns[-1], rows[-1]) if rows.size else None

    assert where(cube) is None
    text = cube.add_text("HHH", 20, 10, size=24)
    left, top, _, _ = where(cube)
    assert 18 <= left <= 26 and 10 <= top <= 20
    text.remove()
    text = cube.add_text("HHH", -20, -10, size=24)
    _, _, right, bottom = where(cube)
    assert 270 <= right <= 281 and 180 <= bottom <= 191
    text.set("")
    assert where(cube) is None
    text.remove()
    with pytest.raises(orvane.ClosedError):
        text.set("x")
    label = cube.add_label("HHH", (0, 0, 3), size=24)
    left, top, right, bottom = where(cube)
    assert abs((left + right) / 2 - 150) < 4 and abs((top + bottom) / 2 - 100) < 6
    cube.look_at((-1, 0, 12), (-1, 0, 0))
    assert where(cube)[0] > 150
    label.remove()
    assert where(cube) is None
    node = cube.add_group(transform=(0, 0, 2))
    label = cube.add_label("H", node)
    node.remove()
    cube.picture(30, 20)
    for wrong in ({"size": 0}, {"size": 10**9}, {"color": "none"}, {"font": "a\0b"}):
        with pytest.raises(ValueError):
            cube.add_text("a", **wrong)
    with pytest.raises(TypeError):
        cube.add_text(5)


def test_models_are_let_go_of_with_the_last_reference(cube):
    gone = weakref.ref(cube)
    view = cube.add_mesh(CORNERS, FACES).geometry[0].positions
    cube.picture(10, 10)
    del cube
    gc.collect()
    assert gone() is None or gone().closed is False  # the fixture may hold it
    assert view.shape == (24, 3)
