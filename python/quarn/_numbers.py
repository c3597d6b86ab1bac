"""Numbers as numpy has them, or without numpy as Python has them."""

from array import array
from math import prod
from typing import TYPE_CHECKING, Any, Iterator, Sequence

try:
    import numpy
except ImportError:
    numpy = None  # type: ignore[assignment]

if TYPE_CHECKING:
    from numpy.typing import NDArray

    Numbers = NDArray[numpy.float64]


def vector(values: "list[float]") -> "Numbers":
    """An array of numbers; a list without numpy."""
    return values if numpy is None else numpy.array(values, dtype=float)


def view(buffer: Any, shape: "tuple[int, ...]") -> "Numbers":
    """An array over memory, which it keeps; a memoryview without numpy."""
    if numpy is None:
        return memoryview(buffer).cast("B").cast("d", shape)
    return numpy.frombuffer(buffer, dtype=float).reshape(shape)


def copy(numbers: "Numbers") -> "Numbers":
    """The same numbers in an array of its own; without numpy nested lists."""
    return numbers.tolist() if numpy is None else numbers.copy()


def to_memory(values: Any, shape: "tuple[int, ...]") -> bytes:
    """The bytes of a table of this shape, from one number or all of them; with numpy from what can be broadcast to it."""
    if numpy is not None:
        given = numpy.asarray(values, dtype=float)
        if given.ndim == 1 and given.size == prod(shape):
            return given.tobytes()
        try:
            return numpy.broadcast_to(given, shape).tobytes()
        except ValueError:
            raise ValueError(f"an array of shape {shape} is needed, not {given.shape}") from None
    return array("d", spread(values, shape)).tobytes()


def spread(values: Any, shape: "tuple[int, ...]") -> "list[float]":
    """One number for each entry of a table of this shape, from a single number or from all of them."""
    flat = list(_flatten(values))
    if len(flat) == 1:
        return flat * prod(shape)
    if len(flat) != prod(shape):
        raise ValueError(f"{prod(shape)} numbers are needed, not {len(flat)}")
    return flat


def _flatten(values: Any) -> "Iterator[float]":
    if hasattr(values, "tolist"):
        values = values.tolist()
    if isinstance(values, Sequence) and not isinstance(values, str):
        for value in values:
            yield from _flatten(value)
    else:
        yield float(values)
