"""`python -m harbor6` is the program harbor."""

import os
import shutil
import sys

from ._native import prefix


def main() -> None:
    program = os.path.join(prefix(), "bin", "harbor")
    found = program if os.access(program, os.X_OK) else shutil.which("harbor")
    if not found:
        sys.exit("harbor6: the program harbor is not installed")
    os.execv(found, ["harbor", *sys.argv[1:]])


if __name__ == "__main__":
    main()
