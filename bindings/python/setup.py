"""Remembers the checkout that the package is installed from, where its library is built."""

import pathlib

from setuptools import setup
from setuptools.command.build_py import build_py


class BuildPy(build_py):
    def run(self) -> None:
        super().run()
        checkout = pathlib.Path(__file__).resolve().parents[2]
        if (checkout / "include" / "hy_wristlog" / "component.h").is_file():
            made = pathlib.Path(self.build_lib, "hy_wristlog", "_checkout.py")
            made.write_text(f"CHECKOUT = {str(checkout)!r}\n", encoding="utf-8")


setup(cmdclass={"build_py": BuildPy})
