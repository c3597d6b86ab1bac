"""Finds, loads and calls the library."""

import os
import threading
from collections import deque
from pathlib import Path
from typing import Any, Callable

from . import _interface
from ._constants import VERSION
from .errors import failure

ffi: Any = _interface.ffi
SONAME = f"libquarn.so.{VERSION.split('.', 1)[0]}"
BUNDLED = Path(__file__).parent / "lib" / SONAME


def _load() -> Any:
    path = str(BUNDLED) if BUNDLED.exists() else os.environ.get("QUARN_LIBRARY") or SONAME
    try:
        return ffi.dlopen(path)
    except OSError as error:
        raise ImportError(
            f"the library of Quarn cannot be loaded: {error}. Install it, or name the file in QUARN_LIBRARY"
        ) from error


lib = _load()

# The library switches the process to the "C" locale while it reads or writes text: one thread at a time.
text_lock = threading.RLock()


class _Calling(threading.local):
    depth = 0


_calling = _Calling()
_to_delete: "deque[Any]" = deque()


def call(function: Callable[..., Any], *arguments: Any) -> Any:
    """What a function of the library returns; raises a QuarnError when it fails."""
    _calling.depth += 1
    try:
        result = function(*arguments)
        code = lib.q_error_code()
    finally:
        _calling.depth -= 1
        if _to_delete and _calling.depth == 0:
            _delete_left_over()
    if code:
        raise failure(code, to_text(lib.q_error_name(code)), to_text(lib.q_error_description(code)))
    return result


def number(function: Callable[..., float], *arguments: Any) -> float:
    """What a function that returns -1 when it fails returns, for reading many numbers: half the time of call()."""
    result = function(*arguments)
    return result if result != -1 else float(call(function, *arguments))


def own_domain(pointer: Any) -> Any:
    """The same pointer to a domain, which is deleted when the last reference to it goes."""
    return ffi.gc(pointer, _delete)


# Python may collect garbage between a call and the reading of its error code, in the same thread: deletions wait then.
# The defaults keep what is needed alive while the interpreter ends.
def _delete(
    pointer: Any,
    calling: _Calling = _calling,
    later: "deque[Any]" = _to_delete,
    delete: Callable[..., Any] = lib.q_domain_delete,
) -> None:
    if calling.depth:
        later.append(pointer)
    else:
        delete(pointer)


def _delete_left_over() -> None:
    while True:
        try:
            lib.q_domain_delete(_to_delete.popleft())
        except IndexError:
            return


# Texts are UTF-8; other bytes in a file survive being read and written.
def to_text(pointer: Any) -> str:
    """The Python text of a C one."""
    text: str = ffi.string(pointer).decode("utf-8", "surrogateescape")
    return text


def to_bytes(text: str) -> bytes:
    """The C text of a Python one, which must not contain the character 0."""
    if not isinstance(text, str):
        raise TypeError(f"a text is needed, not {type(text).__name__}")
    if "\0" in text:
        raise ValueError("a text must not contain the character 0")
    return text.encode("utf-8", "surrogateescape")


def to_list(pointers: Any) -> "list[Any]":
    """The handles in an array that ends with a null."""
    handles: "list[Any]" = []
    while pointers[len(handles)]:
        handles.append(pointers[len(handles)])
    return handles
