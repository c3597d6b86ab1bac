"""Exact reasoning with probabilistic graphical models.

    >>> import quarn
    >>> domain = quarn.Domain.load("examples/chest_clinic.net")
    >>> domain.evidence["asia"] = "yes"
    >>> round(domain["tuberculosis"].beliefs["yes"], 4)
    0.05
"""

from ._constants import VERSION as __version__
from ._constants import Category, Equilibrium, ErrorCode, Kind, Mode, Subtype, Triangulation
from .configuration import Configuration
from .domain import Domain
from .errors import (
    DeletedError,
    FileError,
    ImpossibleEvidence,
    OutOfMemory,
    ParseError,
    ParseWarning,
    QuarnError,
)
from .evidence import Evidence
from .node import Node, Normal

__all__ = [
    "Category",
    "Configuration",
    "DeletedError",
    "Domain",
    "Equilibrium",
    "ErrorCode",
    "Evidence",
    "FileError",
    "ImpossibleEvidence",
    "Kind",
    "Mode",
    "Node",
    "Normal",
    "OutOfMemory",
    "ParseError",
    "ParseWarning",
    "QuarnError",
    "Subtype",
    "Triangulation",
    "__version__",
]
