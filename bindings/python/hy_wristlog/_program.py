"""Finds and runs the program `wristlog`."""

import os
import shutil
import subprocess

from . import _library
from .errors import LibraryNotFoundError, ProgramError, ProgramNotFoundError

PROGRAM_VARIABLE = "HY_WRISTLOG_PROGRAM"
_NAME = "wristlog"


def _found() -> str:
    named = os.environ.get(PROGRAM_VARIABLE)
    if named:
        return named
    try:
        beside = _library.folder_of_library() / _NAME
        if os.access(beside, os.X_OK) and beside.is_file():
            return str(beside)
    except LibraryNotFoundError:
        pass
    on_path = shutil.which(_NAME)
    if on_path is None:
        raise ProgramNotFoundError(
            f"The program {_NAME} was not found, neither beside the library nor on the PATH. The Debian package "
            f"{_NAME} has it, ./dev build makes it, and the environment variable {PROGRAM_VARIABLE} names another."
        )
    return on_path


def run(*arguments: str) -> None:
    """Raises ProgramNotFoundError; and ProgramError with the program's words when it does not end with 0."""
    program = _found()
    try:
        ended = subprocess.run(
            [program, *arguments], stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8", errors="replace"
        )
    except OSError as why:
        raise ProgramNotFoundError(f"{program} cannot be run: {why.strerror}") from None
    if ended.returncode != 0:
        raise ProgramError(ended.returncode, ended.stderr.strip() or f"{program} ended with {ended.returncode}")
