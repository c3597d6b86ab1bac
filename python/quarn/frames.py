"""Tables of rows and columns: pandas where it is present, else lists of dicts."""

import math
from numbers import Real
from typing import Any, Hashable, Iterator, Mapping


def frame(columns: "dict[str, list[Any]]", index: Any = None) -> Any:
    """A DataFrame; without pandas a list with a dict for each row."""
    try:
        import pandas
    except ImportError:
        return [dict(zip(columns, row)) for row in zip(*columns.values())]
    return pandas.DataFrame(columns, index=index)


def read_rows(rows: Any) -> "tuple[list[str], list[Mapping[Hashable, Any]], Any]":
    """Names of columns, rows and index of a DataFrame or of a list of mappings."""
    if hasattr(rows, "columns") and hasattr(rows, "itertuples"):
        names = [str(name) for name in rows.columns]
        if len(set(names)) != len(names):
            raise ValueError("two columns have the same name")
        return names, [dict(zip(names, row)) for row in rows.itertuples(index=False, name=None)], rows.index
    listed = [] if isinstance(rows, Mapping) else list(rows)
    if isinstance(rows, Mapping) or not all(isinstance(row, Mapping) for row in listed):
        raise TypeError("rows must be a DataFrame, or a list of mappings from the names of nodes")
    return list(dict.fromkeys(name for row in listed for name in row)), listed, None


def is_missing(cell: Any) -> bool:
    """Whether a cell says nothing: None, not a number, an empty text, or what pandas has for it."""
    if cell is None or type(cell).__name__ in ("NAType", "NaTType"):
        return True
    if isinstance(cell, str):
        return not cell
    return isinstance(cell, Real) and math.isnan(float(cell))
