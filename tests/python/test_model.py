"""Files, settings, nodes, views, pictures and picking."""

import threading
from pathlib import Path

import numpy as np
import pytest
from conftest import CORNERS, FACES, WHITE

import orvane


def pixels(png: Path) -> bytes:
    return png.read_bytes()


def test_one_line_from_a_file_to_a_picture(model_file, tmp_path):
    orvane.open(model_file).look("crosshatch").save(tmp_path / "house.png")
    assert (tmp_path / "house.png").read_bytes().startswith(b"\x89PNG")


def test_a_file_is_opened_by_any_kind_of_path(model_file):
    for path in (model_file, str(model_file), bytes(model_file)):
        assert orvane.open(path).nodes[-1].endswith("tower")


def test_a_file_that_cannot_be_read_is_told_in_the_sentence_of_the_kit(tmp_path):
    with pytest.raises(orvane.FileError, match="missing.obj") as caught:
        orvane.open(tmp_path / "missing.obj")
    assert isinstance(caught.value, OSError)
    damaged = tmp_path / "damaged.gltf"
    damaged.write_text("{")
    with pytest.raises(orvane.FileError, match="damaged.gltf"):
        orvane.open(damaged)


def test_progress_rises_and_may_end_the_reading(model_file):
    told = []
    orvane.open(model_file, progress=told.append)
    assert told == sorted(told) and told
    with pytest.raises(orvane.FileError):
        orvane.open(model_file, progress=lambda percent: False)
    with pytest.raises(ZeroDivisionError):
        orvane.open(model_file, progress=lambda percent: 1 / 0)


def test_every_field_of_the_settings_is_a_keyword(cube):
    settings = cube.settings
    assert set(orvane.Settings.__annotations__) == set(settings)
    again = orvane.Model(**settings)
    assert again.settings == settings


def test_keywords_are_told_apart_by_either_spelling():
    assert orvane.Model(cull_backs=False).settings["cull_backs"] is False
    assert orvane.Model(cullBacks=False).settings["cull_backs"] is False
    section = {"planes": [{"normal": np.array([0, 1, 0]), "position": (0, 0.5, 0)}], "outline_width": 0.1}
    assert orvane.Model(section=section).settings["section"]["planes"] == [{"normal": [0, 1, 0],
                                                                            "position": [0, 0.5, 0]}]


def test_a_dict_changes_only_what_it_names():
    model = orvane.Model(lines={"width": 3, "color": "#ff0000"})
    model.set(lines={"width": 2})
    assert model.settings["lines"]["width"] == 2
    assert model.settings["lines"]["color"] == "#FF0000"
    assert model.set(lines=False).settings["lines"] is None
    assert model.set(lines=True).settings["lines"]["width"] == 1
    assert model.set(edges=True, lines=None).settings["edges"]["weight"] == 0.5


@pytest.mark.parametrize("settings, sentence", [
    ({"skyy": True}, 'there is no field "skyy"'),
    ({"look": "oil"}, "look is \"oil\"; it has to be one of basic, advanced"),
    ({"lines": {"width": 0}}, "lines.width is 0; it has to be above 0 and at most 100"),
    ({"lines": {"width": float("nan")}}, "lines.width is nan; it has to be a finite number"),
    ({"view": {"fov": 1e9}}, "view.fov is 1e+09; it has to be 1 to 170"),
    ({"samples": 10**30}, "samples"),
    ({"sky": 1}, "sky is a number; it has to be true or false"),
    ({"section": {"planes": [{}] * 7}}, "section.planes holds 7; there are at most 6"),
    ({"edit_path": "cellar"}, "editPath: there is no node 'cellar'; some that there are: cube"),
    ({"sheet": {"watermark": "none.png"}}, "none.png"),
    ({"sheet": {"title": "\ud800"}}, "sheet.title is '\\ud800'; it has to be UTF-8"),
    ({"view": object()}, "view is a object; it has to be what JSON has"),
    ({"view": {1: 2}}, "view has a field 1"),
])
def test_a_wrong_setting_is_refused_in_the_sentence_of_the_kit_and_changes_nothing(cube, settings, sentence):
    before = cube.settings
    with pytest.raises(orvane.SettingsError) as caught:
        cube.set(**{"occlusion": True, **settings})
    assert sentence in str(caught.value)
    assert isinstance(caught.value, ValueError)
    assert cube.settings == before


def test_none_gives_back_what_is_usual(cube):
    usual = orvane.Model().settings
    cube.set(section={"planes": [{"normal": (0, 1, 0)}], "fill": "red"}, background="blue", lines=True, samples=2)
    cube.set(section=None, background=None, lines=None, samples=None, view=None, look=None, antialiasing=None)
    assert cube.settings == usual
    with pytest.raises(orvane.SettingsError, match="skyy"):
        cube.set(skyy=None)


def test_colours_of_settings_go_by_the_names_that_those_of_materials_go_by(cube):
    cube.set(background="SkyBlue", lines={"color": "orange"}, section={"fill": "grey", "outline_color": "teal"},
             sheet={"title": "red"})
    settings = cube.settings
    assert settings["background"] == "#87CEEB" and settings["lines"]["color"] == "#FFA500"
    assert settings["section"]["fill"] == "#808080" and settings["section"]["outline_color"] == "#008080"
    assert settings["sheet"]["title"] == "red"
    with pytest.raises(orvane.SettingsError, match='background is "reddish"; it has to be a colour'):
        cube.set(background="reddish")


def test_settings_that_hold_themselves_are_refused(cube):
    view = {}
    view["eye"] = view
    with pytest.raises(orvane.SettingsError, match="view holds itself or too much"):
        cube.set(view=view)


def test_what_is_no_node_no_material_and_no_geometry_is_told(cube):
    for use, sentence in (
            (lambda: cube.add_mesh(CORNERS, FACES, material="red"), "material is 'red'; it has to be one of"),
            (lambda: cube.add_group(parent="cube"), "parent is 'cube'; it has to be a node"),
            (lambda: cube.add_copy("cube"), "node is 'cube'; it has to be a node"),
            (lambda: cube.refresh(cube.node("cube")), "is no geometry; node.geometry has what was added"),
            (lambda: cube.hide(None), "the node is None; it has to be a text"),
            (lambda: cube.frame(3), "the node is 3; it has to be a text"),
            (lambda: cube.node(None), "path is None"), (lambda: cube.material(3), "name is 3"),
            (lambda: cube.add_text("a").set(5), "text is 5"),
            (lambda: orvane.Geometry(CORNERS), "geometry is made by"),
            (lambda: orvane.Geometry(None), "geometry is made by")):
        with pytest.raises(TypeError) as caught:
            use()
        assert sentence in str(caught.value)
    number = cube.node("cube")._number
    for use in (lambda: cube._native.update(None),
                lambda: cube._native.add_mesh([None], 1, "", None, np.eye(4)),
                lambda: cube._native.add_copy(number, "", number, None)):
        with pytest.raises((TypeError, ValueError)):
            use()
    assert cube.nodes == ["cube"]


def test_names_with_a_zero_byte_are_refused(cube, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(orvane.FileError, match="no zero byte"):
        cube.save("a\0.png", 20, 10)
    with pytest.raises(orvane.FileError):
        orvane.open("a\0.obj")
    with pytest.raises(orvane.FileError):
        cube.material("red").set(texture="a\0.png")
    for use in (lambda: cube.add_material("a\0"), lambda: cube.add_text("a").set("b\0"),
                lambda: cube.add_text("a").set("b" * 4097)):
        with pytest.raises(ValueError, match="zero byte or more than 4096"):
            use()
    assert not list(tmp_path.iterdir())


def test_a_picture_is_an_array_of_rows_from_the_top(cube):
    cube.set(background="#0000ff")
    cube.add_mesh(CORNERS * (1, 0.1, 1), FACES, transform=(0, 2, 0), name="lid",
                  material=cube.add_material(color="#00ff00", unlit=True))
    picture = cube.picture(200, 120)
    assert picture.shape == (120, 200, 3) and picture.dtype == np.uint8 and picture.flags.c_contiguous
    assert tuple(picture[0, 0]) == (0, 0, 255)
    middle = picture[:, 100]
    green, red = (np.flatnonzero((middle == colour).all(axis=1)) for colour in ((0, 255, 0), (255, 0, 0)))
    assert green.size > 2 and red.size > 10 and green.max() < red.min()
    picture[:] = 0  # it is the caller's own
    assert cube.picture(200, 120).any()


def test_a_saved_picture_a_packed_one_and_an_array_are_the_same(cube, tmp_path):
    cube.save(tmp_path / "a.png", 64, 48)
    texture = tmp_path / "b.png"
    texture.write_bytes(cube.png(64, 48))
    assert (tmp_path / "a.png").read_bytes() == texture.read_bytes()


def test_a_transparent_picture_tells_what_is_covered(cube, tmp_path):
    plain, clear = cube.picture(60, 40), cube.picture(60, 40, transparent=True)
    assert clear.shape == (40, 60, 4)
    assert ((clear[..., 3] == 255) == (plain == (255, 0, 0)).all(axis=2)).all() and (clear[0, 0] == 0).all()
    cube.save(tmp_path / "a.png", 60, 40, transparent=True)
    orvane.save_picture(tmp_path / "b.png", clear)
    (tmp_path / "c.png").write_bytes(cube.png(60, 40, transparent=True))
    assert len({(tmp_path / f"{name}.png").read_bytes() for name in "abc"}) == 1
    with pytest.raises(orvane.FileError, match="a JPEG has no transparency"):
        cube.save(tmp_path / "a.jpg", 60, 40, transparent=True)
    with pytest.raises(ValueError, match="the sky covers the background"):
        cube.set(sky=True).picture(60, 40, transparent=True)


def test_a_picture_is_made_for_print(cube, tmp_path):
    cube.set(lines={"width": 2, "color": "blue"})
    blue = [(cube.picture(60, 40, pixel_ratio=ratio) == (0, 0, 255)).all(axis=2).sum() for ratio in (1, 4)]
    assert blue[1] > 2 * blue[0] > 0
    cube.save(tmp_path / "a.png", 60, 40, bits=16, dpi=300)
    file = (tmp_path / "a.png").read_bytes()
    assert file[24] == 16 and b"pHYs" + (11811).to_bytes(4, "big") * 2 + b"\x01" in file
    for wrong, sentence in (({"bits": 9}, "bits is 9"), ({"dpi": 0}, "dpi is 0; it has to be 1 to 10000"),
                            ({"pixel_ratio": 9}, "pixel_ratio is 9"), ({"pixel_ratio": float("nan")}, "pixel_ratio")):
        with pytest.raises(ValueError, match=sentence):
            cube.save(tmp_path / "b.png", 60, 40, **wrong)
    assert not (tmp_path / "b.png").exists()


def test_a_large_picture_tells_how_far_it_is_and_can_be_stopped(cube, tmp_path):
    told = []
    cube.save(tmp_path / "small.png", 60, 40, progress=told.append)
    assert told[-1] == 100 and told == sorted(told)

    def fail(percent):
        raise ZeroDivisionError

    large = tmp_path / "large.png"
    with pytest.raises(ZeroDivisionError):
        cube.save(large, 12000, 12000, progress=fail)
    with pytest.raises(orvane.FileError, match="drawing was stopped"):
        cube.save(large, 12000, 12000, progress=lambda percent: False)
    assert not large.exists()
    assert cube.picture(20, 20).any()


def test_arrays_are_saved_as_pictures(tmp_path):
    ramp = np.linspace(0, 1, 12 * 8).reshape(8, 12)
    for picture in (ramp, np.stack([ramp] * 3, axis=-1), np.rint(ramp * 255).astype(np.uint8)):
        orvane.save_picture(tmp_path / "a.png", picture)
        assert (tmp_path / "a.png").read_bytes() == orvane._native.pack_png(orvane._arrays.picture(ramp))
    orvane.save_picture(tmp_path / "a.jpg", ramp, dpi=72)
    assert (tmp_path / "a.jpg").read_bytes().startswith(b"\xff\xd8")
    for wrong, trouble in ((np.zeros((70000, 1, 3), np.uint8), orvane.FileError), (np.zeros((0, 1, 3), np.uint8), ValueError),
                           (np.zeros((2, 2, 2), np.uint8), ValueError), (ramp * 2, ValueError), ("abc", TypeError),
                           (ramp.astype(int), TypeError)):
        with pytest.raises(trouble, match="picture|a PNG of 1x70000"):
            orvane.save_picture(tmp_path / "b.png", wrong)
    assert not (tmp_path / "b.png").exists()


def test_a_notebook_shows_the_model(cube):
    assert cube._repr_png_().startswith(b"\x89PNG")
    cube.close()
    assert cube._repr_png_() is None


@pytest.mark.parametrize("size", [(0, 10), (10, -1), (-5, -5), (1 << 20, 10), (10**30, 10)])
def test_a_size_that_cannot_be_made_is_refused(cube, size, tmp_path):
    with pytest.raises(ValueError, match="a picture of"):
        cube.picture(*size)
    if min(size) < 1:
        with pytest.raises(ValueError, match="has no pixels"):
            cube.pick_area(0, 0, 1, 1, width=size[0], height=size[1])
    with pytest.raises(orvane.FileError):
        cube.save(tmp_path / "none.png", *size)
    assert not (tmp_path / "none.png").exists()
    with pytest.raises(TypeError):
        cube.picture("wide", 10)
    with pytest.raises(TypeError):
        cube.picture(10.5, 10)


def test_a_file_that_cannot_be_written_is_told(cube, tmp_path):
    with pytest.raises(orvane.FileError, match="no/folder.png"):
        cube.save(tmp_path / "no" / "folder.png", 20, 10)


def test_nodes_are_listed_hidden_shown_and_highlighted(model_file):
    model = orvane.open(model_file, look="basic", antialiasing="none", view={"named": "front"})
    tower = next(path for path in model.nodes if path.endswith("tower"))
    seen = model.picture(100, 100)
    assert (model.hide("tower").picture(100, 100) != seen).any()
    assert (model.show_all().picture(100, 100) == seen).all()
    assert model.isolate(tower).shown_box[0][0] == -0.5
    assert (model.show_all().picture(100, 100) == seen).all()
    lit = model.highlight(model.node("tower"), (0, 0, 1, 1)).picture(100, 100)
    assert (lit == (0, 0, 255)).all(axis=2).any() and not (seen == (0, 0, 255)).all(axis=2).any()
    assert (model.clear_highlight("tower").picture(100, 100) == seen).all()
    for use in (model.hide, model.show, model.isolate, model.node, model.frame, model.clear_highlight):
        with pytest.raises(orvane.NodeError, match="there is no node 'cellar'; some that there are: "):
            use("cellar")


def test_names_that_are_no_unicode_come_back_as_they_went(tmp_path):
    path = tmp_path / "bytes.obj"
    path.write_bytes(b"o caf\xe9\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
    model = orvane.open(path)
    for node in model.nodes:
        assert model.node(node).path == node
        model.hide(node)


def test_a_view_is_chosen_by_name_by_places_and_by_what_fills_it(cube):
    front = cube.picture(80, 80)
    cube.look_at((6, 0, 0), (0, 0, 0))
    assert cube.camera.eye == pytest.approx((6, 0, 0)) and cube.camera.target == pytest.approx((0, 0, 0), abs=1e-5)
    assert cube.settings["view"]["eye"] == [6, 0, 0]
    small = (cube.picture(80, 80) != WHITE).any(axis=2).sum()
    assert (cube.frame().picture(80, 80) != WHITE).any(axis=2).sum() > small
    assert (cube.view("front").picture(80, 80) == front).all()
    assert cube.look_at((6, 1, 5), (0, 0, 0)).camera.up[1] > 0.9
    assert cube.set(view={"upAxis": "z"}).camera.up[2] > 0.7 and cube.settings["view"]["up"] is None
    assert cube.look_at((6, 1, 5), (0, 0, 0), (1, 0, 0)).camera.up[0] > 0.5
    cube.set(view={"upAxis": "y", "up": None, "eye": None, "target": None})
    cube.set(section={"planes": [{"normal": (0, 1, 0), "position": (0, 0, 0)}]})
    assert cube.shown_box[1][1] == pytest.approx(0, abs=1e-6) and cube.box[1][1] == 1
    cube.frame_shown().frame("cube")
    for eye in ((0, 0, 0), (float("nan"), 0, 0), (1, 2), "abc", None, (1e30, 0, 0)):
        with pytest.raises((ValueError, TypeError)):
            cube.look_at(eye, (0, 0, 0))
    with pytest.raises(ValueError, match="nothing to see"):
        orvane.Model().frame()


def test_picking_tells_what_is_seen_and_what_is_behind(cube):
    behind = cube.add_mesh(CORNERS, FACES, transform=(0, 0, -5), name="behind")
    hit = cube.pick(100, 100, width=200, height=200)
    assert hit.path == "cube" and hit.position[2] == pytest.approx(1, abs=1e-3) and (hit.x, hit.y) == (100, 100)
    through = cube.pick_through(100, 100, width=200, height=200)
    assert [found.path for found in through] == ["cube", "behind"] and through[1].node == behind
    assert cube.pick(0, 0, width=200, height=200) is None
    assert cube.pick(-5, 10**40, width=200, height=200) is None
    assert len(cube.pick_area(-100, -100, 10**9, 10**9, width=200, height=200)) >= 1
    assert cube.pick_area(0, 0, -3, 0, width=200, height=200) == []
    for most in (0, -1, 10**9):
        with pytest.raises(ValueError, match="most"):
            cube.pick_through(1, 1, most=most)


def test_counts_are_told(cube, model_file):
    cube.picture(32, 32)
    assert cube.statistics["meshes"] == 1 and cube.statistics["drawn_triangles"] >= 12
    assert orvane.open(model_file).report["meshes"] == 2
    assert any("obj" in endings for endings in orvane.formats().values())


def test_a_closed_model_refuses_everything_but_another_close(cube):
    node, texts = cube.node("cube"), cube.add_text("a")
    material = cube.material("red")
    with cube as model:
        assert model is cube and not cube.closed
    cube.close()
    assert cube.closed and "closed" in repr(cube)
    for use in (cube.picture, cube.frame, cube.show_all, cube.clear_highlight, lambda: cube.settings,
                lambda: cube.set(sky=True), lambda: cube.nodes, lambda: cube.box, lambda: cube.report,
                lambda: cube.statistics, lambda: cube.pick(1, 1), lambda: cube.add_mesh(CORNERS, FACES),
                lambda: cube.add_line(CORNERS), lambda: cube.add_text("b"), lambda: node.path, node.remove,
                lambda: texts.set("c"), texts.remove, lambda: material.set(color="red"), lambda: material.name,
                cube.add_group, cube.add_material, lambda: cube.camera, lambda: cube.save("never.png")):
        with pytest.raises(orvane.ClosedError, match="the model is closed"):
            use()
    repr(node), repr(material)


def test_threads_draw_several_models_each_its_own(cube):
    expected = cube.picture(60, 40)
    wrong = []

    def draw(number):
        with orvane.Model(look="basic", antialiasing="none", view={"named": "front"}) as model:
            model.add_mesh(CORNERS, FACES, material=model.add_material(color="red", unlit=True))
            for _ in range(3):
                if not (model.picture(60, 40) == expected).all() or not (cube.picture(60, 40) == expected).all():
                    wrong.append(number)

    threads = [threading.Thread(target=draw, args=(number,)) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong
