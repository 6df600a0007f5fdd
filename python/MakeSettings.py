"""Writes orvane/_settings.py: the settings as types, as the module itself tells them.

The names come from the default settings, the kinds of what may be none from what is accepted for it, and the words of
an enumeration from the sentence that refuses another one. So a new field needs nothing here.
"""

from __future__ import annotations

import importlib.util
import json
import re
import sys
import types
from pathlib import Path
from typing import Any

PACKAGE = Path(sys.argv[1])


def load_native() -> Any:
    """Loads the module alone: the package around it is what is about to be written."""
    found = next(PACKAGE.glob("_native.*.so"))
    spec = importlib.util.spec_from_file_location("_native", found)
    assert spec and spec.loader
    module = importlib.util.module_from_spec(spec)
    # Refusals are raised by the exceptions of the package.
    sys.modules["orvane"] = types.ModuleType("orvane")
    errors = importlib.util.spec_from_file_location("orvane._errors", PACKAGE / "_errors.py")
    assert errors and errors.loader
    sys.modules["orvane._errors"] = importlib.util.module_from_spec(errors)
    errors.loader.exec_module(sys.modules["orvane._errors"])
    spec.loader.exec_module(module)
    return module


native = load_native()
DEFAULTS = json.loads(native.default_settings())
#: Values that stand for the kinds there are; the order tells them apart.
KINDS: list[tuple[str, Any]] = [
    ("float", 0.5), ("float", 1.5), ("int", 1), ("bool", True), ("ColorLike", "#010203"), ("VectorLike", [0, 1, 0]),
    ("str", "a"),
]


def snake(name: str) -> str:
    return re.sub(r"[A-Z]", lambda found: "_" + found.group(0).lower(), name)


def attempt(path: list[str], value: Any) -> tuple[dict[str, Any] | None, str]:
    """Sets a field of the default settings; gives the settings, or the refusal."""
    settings = json.loads(json.dumps(DEFAULTS))
    place = settings
    for name in path[:-1]:
        if not isinstance(place.get(name), dict):
            place[name] = {}
        place = place[name]
    place[path[-1]] = value
    try:
        return json.loads(native.check_settings(json.dumps(settings))), ""
    except Exception as refusal:
        return None, str(refusal)


def at(settings: dict[str, Any], path: list[str]) -> Any:
    value: Any = settings
    for name in path:
        value = value[name]
    return value


CLASSES: list[tuple[str, dict[str, str], str]] = []


def define(path: list[str], fields: dict[str, Any]) -> str:
    name = "".join(part[0].upper() + part[1:] for part in path) + "Settings" if path else "Settings"
    members = {snake(field): kind_of([*path, field], value) for field, value in fields.items() if field != "version"}
    CLASSES.append((name, members, ".".join(path)))
    return name


def words_of(path: list[str]) -> list[str]:
    _, refusal = attempt(path, "?")
    found = re.search(r"has to be one of (.*)$", refusal)
    return found.group(1).split(", ") if found else []


def fill(path: list[str]) -> dict[str, Any] | None:
    """Gives the settings with all fields of one that may be none, as far as it has fields."""
    given: dict[str, float] = {}
    for _ in range(8):
        filled, refusal = attempt(path, given)
        if filled:
            return filled
        # A field that has no default within its bounds gets one.
        missing = re.match(re.escape(".".join(path)) + r"\.(\w+) is ", refusal)
        if not missing or missing.group(1) in given:
            return None
        given[missing.group(1)] = 1.0
    return None


def optional_kind(path: list[str]) -> str:
    filled = fill(path)
    if filled:
        return define(path, at(filled, path)) + " | bool | None"
    words = words_of(path)
    if words:
        return f"Literal[{', '.join(map(repr, words))}] | None"
    # A number may be bound to anything; its refusal by range tells it as well.
    for kind, value in KINDS:
        settings, refusal = attempt(path, value)
        of_this_kind = settings is not None or ("it has to be" in refusal and re.search(
            r" is -?[0-9.e+]+(;| in )", refusal) is not None)
        if of_this_kind:
            return f"{kind} | None"
    return "Any"


def kind_of(path: list[str], value: Any) -> str:
    if value is None:
        return optional_kind(path)
    kind = kind_of_some(path, value)
    return kind + " | None" if attempt(path, None)[0] else kind


def kind_of_some(path: list[str], value: Any) -> str:
    if isinstance(value, dict):
        return define(path, value)
    if isinstance(value, bool):
        return "bool"
    if isinstance(value, (int, float)):
        return "float" if attempt(path, 0.5)[0] or isinstance(value, float) else "int"
    if isinstance(value, str):
        words = words_of(path)
        if words:
            return f"Literal[{', '.join(map(repr, words))}]"
        return "ColorLike" if value.startswith("#") else "str"
    if value and all(isinstance(part, (int, float)) for part in value):
        return "VectorLike"
    filled, _ = attempt(path, [{}])
    if filled:
        part = at(filled, path)[0]
        name = path[-1][0].upper() + path[-1][1:].removesuffix("s") + "Settings"
        members = {snake(field): "VectorLike" if isinstance(known, list) else "Any" for field, known in part.items()}
        CLASSES.append((name, members, ".".join(path) + "[]"))
        return f"list[{name}]"
    return "list[Any]"


define([], DEFAULTS)
lines = [
    '"""The settings of a model as types. Written by the build, from what the module accepts."""',
    "",
    "from __future__ import annotations",
    "",
    "from collections.abc import Sequence",
    "from typing import Any, Literal, TypedDict",
    "",
    "import numpy as np",
    "from numpy.typing import NDArray",
    "",
    "#: Three numbers.",
    "VectorLike = Sequence[float] | NDArray[np.floating[Any]] | NDArray[np.integer[Any]]",
    '#: ``"#rrggbb"``, ``"#rrggbbaa"``, or three or four numbers of 0 to 1.',
    "ColorLike = str | Sequence[float] | NDArray[np.floating[Any]]",
]
for name, members, place in CLASSES:
    lines += ["", "", f"class {name}(TypedDict, total=False):",
              f'    """{"All settings" if not place else "The fields of ``" + place + "``"}, as keywords or a dict."""', ""]
    lines += [f"    {member}: {kind}" for member, kind in members.items()]
(PACKAGE / "_settings.py").write_text("\n".join(lines) + "\n")
