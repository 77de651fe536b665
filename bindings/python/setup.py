"""Tells the version of the checkout that the package is installed from, and remembers where its library is built."""

import pathlib
import runpy

from setuptools import setup
from setuptools.command.build_py import build_py

CHECKOUT = pathlib.Path(__file__).resolve().parents[2]
OWN_VERSION = runpy.run_path(str(pathlib.Path(__file__).with_name("hy_wristlog") / "_version.py"))["__version__"]
if not OWN_VERSION:
    raise SystemExit("hy_wristlog is built from a checkout, whose CMakeLists.txt tells the version.")


class BuildPy(build_py):
    def run(self) -> None:
        super().run()
        if (CHECKOUT / "include" / "hy_wristlog" / "component.h").is_file():
            made = pathlib.Path(self.build_lib, "hy_wristlog", "_checkout.py")
            made.write_text(f"CHECKOUT = {str(CHECKOUT)!r}\n", encoding="utf-8")


setup(version=OWN_VERSION, cmdclass={"build_py": BuildPy})
