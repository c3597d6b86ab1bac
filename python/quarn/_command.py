"""The command quarn of a wheel: the program beside the package."""

import os
import sys

from .display import BUNDLED_COMMAND


def main() -> None:
    """Becomes the program, with the arguments of this process."""
    try:
        os.execv(BUNDLED_COMMAND, [str(BUNDLED_COMMAND), *sys.argv[1:]])
    except OSError as error:
        sys.exit(f"quarn: {BUNDLED_COMMAND}: {error.strerror}")
