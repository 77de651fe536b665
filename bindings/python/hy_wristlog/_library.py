"""Finds and loads the shared libraries."""

import ctypes
import importlib
import os
import pathlib
from typing import Iterator, Optional

from ._version import MAJOR

LIBRARY_VARIABLE = "HY_WRISTLOG_LIBRARY"
_NAME = "libhy_wristlog.so"
_SONAME = f"{_NAME}.{MAJOR}".rstrip(".")
_SIMULATOR_NAME = f"libhy_wristlog_simulator.so.{MAJOR}".rstrip(".")
_BUILD_FOLDERS = ("build", "build-release")

_library: Optional[ctypes.CDLL] = None
_simulator: Optional[ctypes.CDLL] = None


class LibraryNotFoundError(OSError):
    """The shared library is not there, or cannot be loaded."""


def _checkout() -> Optional[pathlib.Path]:
    """The checkout that the package lies in, or that it was installed from."""
    parents = pathlib.Path(__file__).resolve().parents
    if len(parents) > 3 and (parents[3] / "include" / "hy_wristlog" / "component.h").is_file():
        return parents[3]
    try:
        remembered = importlib.import_module("._checkout", __package__)
    except ImportError:
        return None
    return pathlib.Path(remembered.CHECKOUT)


def _places() -> Iterator[str]:
    """Where the library may be, the best place first. A name without a folder: where the system's loader looks."""
    yield str(pathlib.Path(__file__).resolve().parent / _NAME)
    checkout = _checkout()
    if checkout is not None:
        for folder in _BUILD_FOLDERS:
            yield str(checkout / folder / _NAME)
    yield _SONAME


def _load(path: str) -> ctypes.CDLL:
    library = ctypes.CDLL(path)
    library.DllGetClassObject  # AttributeError when it is some other library
    return library


def component() -> ctypes.CDLL:
    """The library: what the environment variable names, and nothing else if it is set; otherwise the one
    beside this package, in a build folder of its checkout (of the one that it was installed from), or of the
    system.

    Raises LibraryNotFoundError, which tells what was tried.
    """
    global _library
    if _library is not None:
        return _library
    named = os.environ.get(LIBRARY_VARIABLE)
    tried = []
    for path in [named] if named else _places():
        if os.sep in path and not os.path.exists(path):
            tried.append(f"{path}: not there")
            continue
        try:
            _library = _load(path)
            return _library
        except (OSError, AttributeError) as why:
            tried.append(f"{path}: {why}")
    raise LibraryNotFoundError(
        f"{_NAME} was not found. Build it with ./dev build in the checkout, install the Debian package "
        f"libhy-wristlog{MAJOR}, or name it in the environment variable {LIBRARY_VARIABLE}. Tried:\n  "
        + "\n  ".join(tried)
    )


def folder_of_library() -> pathlib.Path:
    """Where the loaded library lies, as the process's memory map tells."""
    address = ctypes.cast(component().DllGetClassObject, ctypes.c_void_p).value or 0
    with open("/proc/self/maps", encoding="utf-8", errors="surrogateescape") as maps:
        for line in maps:
            fields = line.split(None, 5)
            begins, ends = (int(number, 16) for number in fields[0].split("-"))
            if begins <= address < ends and len(fields) > 5:
                return pathlib.Path(fields[5].rstrip("\n")).parent
    return pathlib.Path()


def simulator() -> ctypes.CDLL:
    """The simulated loggers' library, which lies beside the library.

    Raises LibraryNotFoundError.
    """
    global _simulator
    if _simulator is None:
        path = folder_of_library() / _SIMULATOR_NAME
        try:
            _simulator = ctypes.CDLL(str(path))
        except OSError as why:
            raise LibraryNotFoundError(
                f"{_SIMULATOR_NAME} was not found beside the library. ./dev build makes it, and the Debian package "
                f"libhy-wristlog-simulator{MAJOR} has it. {path}: {why}"
            ) from None
    return _simulator
