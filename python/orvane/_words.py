"""Settings between what people write in Python and JSON."""

from __future__ import annotations

import functools
import json
import math
import operator
import re
from collections.abc import Mapping
from typing import Any

import numpy as np

from . import _native
from ._errors import SettingsError

_HUGE = 2**31 - 1


def camel(name: str) -> str:
    """Gives the name of a field in JSON: ``outline_width`` is ``outlineWidth``."""
    return re.sub(r"_([a-z0-9])", lambda found: found.group(1).upper(), name)


def snake(name: str) -> str:
    """Gives the name of a field in Python: ``outlineWidth`` is ``outline_width``."""
    return re.sub(r"[A-Z]", lambda found: "_" + found.group(0).lower(), name)


def pythonic(value: Any) -> Any:
    """Gives settings by their names in Python."""
    if isinstance(value, dict):
        return {snake(name): pythonic(part) for name, part in value.items() if name != "version"}
    if isinstance(value, list):
        return [pythonic(part) for part in value]
    return value


#: Fields that hold a colour.
_COLORED = re.compile(r"(^|\.)(background|fill|\w*[cC]olor)$")


def _plain(path: str, value: Any) -> Any:
    """Gives a value that JSON has."""
    if isinstance(value, (np.ndarray, np.generic)):
        value = value.tolist()
    if isinstance(value, Mapping):
        named = {}
        for name, part in value.items():
            if not isinstance(name, str):
                raise SettingsError(f"{path} has a field {name!r}; the name of a field has to be a text")
            named[camel(name)] = _plain(f"{path}.{camel(name)}", part)
        return named
    if isinstance(value, (list, tuple)):
        return [_plain(f"{path}[{i}]", part) for i, part in enumerate(value)]
    if isinstance(value, float) and not math.isfinite(value):
        raise SettingsError(f"{path} is {value}; it has to be a finite number")
    if isinstance(value, str) and any("\ud800" <= letter <= "\udfff" for letter in value):
        raise SettingsError(f"{path} is {ascii(value)}; it has to be UTF-8")
    if isinstance(value, str) and _COLORED.search(path):
        return _NAMES.get(value.lower(), value)
    if value is None or isinstance(value, (bool, int, float, str)):
        return value
    raise SettingsError(f"{path} is a {type(value).__name__}; it has to be what JSON has: "
                        "a number, a text, a truth value, a list, a dict or None")


def _merge(old: Any, new: Any) -> Any:
    if not isinstance(new, dict):
        return new
    merged = dict(old) if isinstance(old, dict) else {}
    for name, part in new.items():
        merged[name] = _merge(merged.get(name), part)
    return merged


def merge(settings: dict[str, Any], given: Mapping[str, Any]) -> dict[str, Any]:
    """Gives settings with what is given in place of what they had.

    A dict changes only the fields that it names. ``True`` switches on what has further settings, in those it
    has or by default, and ``False`` off. ``None`` gives back what is usual.
    """
    merged = dict(settings)
    for word, value in given.items():
        name = camel(word)
        try:
            plain = _plain(name, value)
            if isinstance(plain, bool) and _is_switch(name):
                plain = {} if plain else None
            merged[name] = _usual().get(name) if plain is None else _merge(merged.get(name), plain)
        except RecursionError:
            raise SettingsError(f"{name} holds itself or too much in each other; no field goes so deep") from None
    return merged


@functools.cache
def _usual() -> dict[str, Any]:
    found = json.loads(_native.default_settings())
    assert isinstance(found, dict)
    return found


@functools.cache
def _is_switch(name: str) -> bool:
    """Tells whether a field is none by default and no truth value, so that one can only mean on or off."""
    if _usual().get(name, False) is not None:
        return False
    try:
        _native.check_settings(json.dumps({name: True}))
        return False
    except SettingsError:
        return True


def to_json(settings: Mapping[str, Any]) -> str:
    """Gives the text of settings."""
    try:
        return json.dumps(settings, allow_nan=False)
    except (RecursionError, ValueError) as trouble:
        raise SettingsError(f"the settings are no JSON: {trouble}") from None


#: Those that orvane-render knows.
_NAMES = {
    "black": "#000000", "white": "#ffffff", "gray": "#808080", "grey": "#808080", "silver": "#c0c0c0",
    "red": "#ff0000", "maroon": "#800000", "orange": "#ffa500", "yellow": "#ffff00", "olive": "#808000",
    "lime": "#00ff00", "green": "#008000", "aqua": "#00ffff", "cyan": "#00ffff", "teal": "#008080",
    "blue": "#0000ff", "navy": "#000080", "purple": "#800080", "magenta": "#ff00ff", "fuchsia": "#ff00ff",
    "brown": "#a52a2a", "pink": "#ffc0cb", "beige": "#f5f5dc", "ivory": "#fffff0", "skyblue": "#87ceeb",
}


def color(value: Any, name: str = "color") -> tuple[float, float, float, float]:
    """Reads a colour: ``"#rgb"``, ``"#rrggbb"``, ``"#rrggbbaa"``, a plain name, or 3 or 4 numbers of 0 to 1."""
    if isinstance(value, str):
        digits = _NAMES.get(value.lower(), value)
        if re.fullmatch(r"#[0-9a-fA-F]{3}", digits):
            digits = "#" + "".join(2 * digit for digit in digits[1:])
        if not re.fullmatch(r"#([0-9a-fA-F]{6}|[0-9a-fA-F]{8})", digits):
            raise ValueError(f"{name} is {value!r}; it has to be #RGB, #RRGGBB, #RRGGBBAA or one of "
                             + ", ".join(_NAMES))
        channels = [int(digits[i:i + 2], 16) / 255 for i in range(1, len(digits), 2)]
    else:
        channels = numbers(value, name)
        if len(channels) not in (3, 4) or not all(0 <= channel <= 1 for channel in channels):
            raise ValueError(f"{name} is {value!r}; it has to be 3 or 4 numbers from 0 to 1")
    red, green, blue, *alpha = channels
    return red, green, blue, alpha[0] if alpha else 1.0


def numbers(value: Any, name: str) -> list[float]:
    """Reads a few numbers."""
    try:
        return [float(part) for part in value]
    except (TypeError, ValueError):
        raise TypeError(f"{name} is {value!r}; it has to be numbers") from None


def triple(value: Any, name: str) -> tuple[float, float, float]:
    """Reads a place or a direction: three finite numbers."""
    parts = numbers(value, name)
    if len(parts) != 3 or not all(math.isfinite(part) and abs(part) <= 1e15 for part in parts):
        raise ValueError(f"{name} is {value!r}; it has to be three numbers from -1e15 to 1e15")
    return parts[0], parts[1], parts[2]


def number(value: Any, name: str, least: float, most: float) -> float:
    """Reads a number within bounds."""
    try:
        read = float(value)
    except (TypeError, ValueError):
        raise TypeError(f"{name} is {value!r}; it has to be a number") from None
    if not least <= read <= most:
        raise ValueError(f"{name} is {read:g}; it has to be {least:g} to {most:g}")
    return read


def text(value: Any, name: str) -> str:
    """Reads a text of any length, such as a path of nodes."""
    if not isinstance(value, str):
        raise TypeError(f"{name} is {value!r}; it has to be a text")
    return value


def word(value: Any, name: str) -> str:
    """Reads a text that is shown or goes by as a name."""
    if "\0" in text(value, name) or len(value) > 4096:
        raise ValueError(f"{name} has a zero byte or more than 4096 characters; it has to be without and shorter")
    return str(value)


def whole(value: Any, name: str) -> int:
    """Reads a whole number; one beyond 32 bits counts as the last within, which nothing has room for either."""
    try:
        return max(-_HUGE, min(_HUGE, operator.index(value)))
    except TypeError:
        raise TypeError(f"{name} is {value!r}; it has to be a whole number") from None
