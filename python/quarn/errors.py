"""What can go wrong in the library, as exceptions."""

from ._constants import ErrorCode


class QuarnError(Exception):
    """A call of the library failed.

    code  an ErrorCode
    name  its short name, such as "usage"
    text  what it means, which is also the text of the exception
    """

    def __init__(self, code: int, name: str, text: str) -> None:
        super().__init__(code, name, text)
        self.code = ErrorCode(code)
        self.name = name
        self.text = text

    def __str__(self) -> str:
        return self.text

    def about(self, what: str) -> "QuarnError":
        """The same with what it is about."""
        return type(self)(self.code, self.name, f"{what}: {self.text}")


class ImpossibleEvidence(QuarnError):
    """The evidence has probability 0, or contradicts what would otherwise be likely by more than a number can tell."""


class OutOfMemory(QuarnError, MemoryError):
    """There is no memory for a table or another object, or the tables of a network exceed that of the machine."""


class FileError(QuarnError, OSError):
    """A file cannot be opened, read or written; errno and strerror tell why, where that is known."""

    def __init__(self, code: int, name: str, text: str) -> None:
        super().__init__(code, name, text)
        self.errno = self.strerror = self.filename = None  # type: ignore[assignment]

    def __str__(self) -> str:
        return self.text

    def about(self, what: str, reason: "OSError | None" = None) -> "FileError":
        """The same for a file."""
        error = FileError(self.code, self.name, f"{what}: {reason.strerror}" if reason else what)
        if reason:
            error.errno, error.strerror = reason.errno, reason.strerror
        return error


class DeletedError(QuarnError, ReferenceError):
    """A domain was used after it was closed, or a node after it was deleted."""

    def __init__(self, text: str) -> None:
        super().__init__(ErrorCode.USAGE, "usage", text)

    def __reduce__(self) -> "tuple[type[DeletedError], tuple[str]]":
        return DeletedError, (self.text,)


class ParseError(QuarnError):
    """A network, a case file or an expression cannot be read.

    messages  what was found: pairs of a line number and a text; of expressions, the number of characters before
    """

    def __init__(self, code: int, name: str, text: str, messages: "list[tuple[int, str]]") -> None:
        super().__init__(code, name, text)
        self.args = (code, name, text, messages)
        self.messages = messages

    def __str__(self) -> str:
        return "\n".join([self.text] + [f"  {place}: {message}" for place, message in self.messages])


class ParseWarning(UserWarning):
    """What a reader warned of in a file that it could read."""


_CLASSES = {
    ErrorCode.INCONSISTENCY_OR_UNDERFLOW: ImpossibleEvidence,
    ErrorCode.NO_MEMORY: OutOfMemory,
    ErrorCode.IO: FileError,
}


def failure(code: int, name: str, text: str) -> QuarnError:
    """The exception for an error code."""
    return _CLASSES.get(ErrorCode(code), QuarnError)(code, name, text)
