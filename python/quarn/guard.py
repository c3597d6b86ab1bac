"""Who may use a domain: one thread at a time, and nobody after it was closed."""

import threading
from typing import Any

from .errors import DeletedError


class Guard:
    """Holds the memory of a domain. Inside ``with guard:`` no other thread uses the domain, and it is not closed."""

    def __init__(self, owner: Any) -> None:
        self.owner = owner
        self._lock = threading.RLock()

    def __enter__(self) -> None:
        self._lock.acquire()
        if self.owner is None:
            self._lock.release()
            raise DeletedError("the domain was closed")

    def __exit__(self, *_: object) -> None:
        self._lock.release()

    def close(self) -> None:
        """Lets go of the memory, which stays as long as arrays over it are in use."""
        with self._lock:
            self.owner = None
