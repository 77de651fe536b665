"""The package's version: that of the checkout's CMake project, also where it was installed from one."""

import importlib.metadata
import pathlib
import re


def _found() -> str:
    project = pathlib.Path(__file__).resolve().parents[3] / "CMakeLists.txt"
    if project.is_file():
        text = project.read_text(encoding="utf-8")
        told = re.search(r"^project\(HY_Wristlog VERSION ([0-9.]+)", text, re.MULTILINE)
        if told:
            return told.group(1)
    try:
        return importlib.metadata.version("hy_wristlog")
    except importlib.metadata.PackageNotFoundError:  # the folder alone was copied
        return ""


__version__ = _found()
MAJOR = __version__.split(".")[0]
