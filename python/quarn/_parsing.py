"""Collects what the readers of the library report."""

import warnings
from typing import Any, Callable

from ._library import call, ffi, text_lock, to_text
from .errors import FileError, OutOfMemory, ParseError, ParseWarning, QuarnError

_WARNING = "warning: "


def read(source: str, function: Callable[..., Any], *arguments: Any) -> Any:
    """Calls a reader of the library, which takes a handler and its data at last.

    Its errors are raised as a ParseError, its warnings given as ParseWarning.
    """
    messages: "list[tuple[int, str]]" = []

    def hear(place: int, message: Any, _: Any) -> None:
        messages.append((place, to_text(message)))

    handler = ffi.callback("void(size_t, const char*, void*)", hear)
    try:
        with text_lock:
            result = call(function, *arguments, handler, ffi.NULL)
    except OutOfMemory:
        raise
    except FileError as error:
        raise error.about(f"{source} cannot be read", _why_unreadable(source)) from None
    except QuarnError as error:
        if not messages:
            raise
        raise ParseError(error.code, error.name, f"{source} cannot be read", messages) from None
    for place, message in messages:
        warnings.warn(f"{source}:{place}: {message.removeprefix(_WARNING)}", ParseWarning, stacklevel=4)
    return result


def _why_unreadable(path: str) -> "OSError | None":
    try:
        with open(path, "rb"):
            return None
    except OSError as reason:
        return reason
