"""The package is typed: mypy finds nothing in it, and finds what is wrong in its use."""

import os
import subprocess
import sys
from pathlib import Path

import orvane

PACKAGE = Path(orvane.__file__).parent
FLAGS = ["--enable-incomplete-feature=Unpack", "--python-version=3.11", "--no-error-summary"]


def mypy(folder, *arguments):
    return subprocess.run([sys.executable, "-m", "mypy", *FLAGS, "--cache-dir", str(folder / "cache"), *arguments],
                          capture_output=True, text=True, cwd=folder, env={**os.environ, "MYPYPATH": str(PACKAGE.parent)})


def test_the_package_is_typed_throughout(tmp_path):
    assert (PACKAGE / "py.typed").exists()
    done = mypy(tmp_path, "--strict", "-p", "orvane")
    assert done.returncode == 0, done.stdout + done.stderr


def test_the_stub_is_that_of_the_module(tmp_path):
    done = subprocess.run([sys.executable, "-m", "mypy.stubtest", "--ignore-missing-stub",
                           "--mypy-config-file", os.devnull, "orvane._native"],
                          capture_output=True, text=True, cwd=tmp_path,
                          env={**os.environ, "MYPYPATH": str(PACKAGE.parent)})
    lacking = [line for line in done.stdout.splitlines() if "not present at runtime" in line]
    assert not lacking and "not checked" not in done.stderr, done.stdout + done.stderr
    stub = (PACKAGE / "_native.pyi").read_text()
    for owner in (orvane._native, orvane._native.Model, orvane._native.Geometry):
        for name in vars(owner):
            if not name.startswith("_"):
                assert f"def {name}(" in stub or f"class {name}" in stub or f"{name}:" in stub, name


def test_wrong_use_is_found(tmp_path):
    (tmp_path / "use.py").write_text(
        'import orvane\n'
        'orvane.open("a.ifc", sky=True, lines={"width": 2}).look("phong").save("a.png")\n'
        'picture = orvane.Model().picture(10, 10)\n'
        'orvane.open("a.ifc", skyy=True)\n'
        'orvane.Model(lines={"widht": 2})\n'
        'orvane.Model().picture("10")\n')
    done = mypy(tmp_path, "use.py")
    lines = {line.split(":")[1] for line in done.stdout.splitlines() if "error" in line}
    assert lines == {"4", "5", "6"}, done.stdout + done.stderr


def test_everything_public_has_a_docstring():
    for name in orvane.__all__:
        if name.startswith("__"):
            continue
        item = getattr(orvane, name)
        assert item.__doc__, name
        for part, value in vars(item).items() if isinstance(item, type) else ():
            if not part.startswith("_") and (callable(value) or isinstance(value, (property, classmethod))):
                assert value.__doc__, f"{name}.{part}"
