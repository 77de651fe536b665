"""Makes the wheel with the standard library alone, so that pip needs no network and no other package."""

import base64
import hashlib
import pathlib
import runpy
import zipfile
from typing import Any, Dict

_HERE = pathlib.Path(__file__).resolve().parent
_CHECKOUT = _HERE.parents[1]
_PACKAGE = "hy_wristlog"
_EARLIEST = (1980, 1, 1, 0, 0, 0)
"""The time of all files, so that the same sources give the same wheel."""
_ABOUT_WHEEL = "Wheel-Version: 1.0\nGenerator: hy_wristlog\nRoot-Is-Purelib: true\nTag: py3-none-any\n"
_METADATA = """\
Metadata-Version: 2.1
Name: hy_wristlog
Version: {version}
Summary: Talks to wrist-worn activity loggers in their docks
Requires-Python: >=3.9
Classifier: Operating System :: POSIX :: Linux
Classifier: Programming Language :: Python :: 3
Classifier: Typing :: Typed
Provides-Extra: analysis
Requires-Dist: numpy; extra == "analysis"
Requires-Dist: pandas; extra == "analysis"
Description-Content-Type: text/markdown

{readme}"""


def _version() -> str:
    version: str = runpy.run_path(str(_HERE / _PACKAGE / "_version.py"))["__version__"]
    if not version:
        raise SystemExit(f"{_PACKAGE} is built from a checkout, whose CMakeLists.txt tells the version.")
    return version


def _digest(data: bytes) -> str:
    return base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()


def _write_wheel(folder: str, files: Dict[str, bytes]) -> str:
    version = _version()
    about = f"{_PACKAGE}-{version}.dist-info"
    readme = (_HERE / "README.md").read_text(encoding="utf-8")
    files[f"{about}/METADATA"] = _METADATA.format(version=version, readme=readme).encode()
    files[f"{about}/WHEEL"] = _ABOUT_WHEEL.encode()
    record = [f"{name},sha256={_digest(data)},{len(data)}\n" for name, data in files.items()]
    files[f"{about}/RECORD"] = "".join([*record, f"{about}/RECORD,,\n"]).encode()
    name = f"{_PACKAGE}-{version}-py3-none-any.whl"
    with zipfile.ZipFile(pathlib.Path(folder, name), "w") as wheel:
        for path, data in files.items():
            entry = zipfile.ZipInfo(path, _EARLIEST)
            entry.external_attr = 0o644 << 16
            wheel.writestr(entry, data, zipfile.ZIP_DEFLATED)
    return name


def build_wheel(wheel_directory: str, config_settings: Any = None, metadata_directory: Any = None) -> str:
    """The package, which remembers the checkout that it is installed from, where its library is built."""
    sources = sorted(path for path in (_HERE / _PACKAGE).iterdir() if path.suffix == ".py" or path.name == "py.typed")
    files = {f"{_PACKAGE}/{path.name}": path.read_bytes() for path in sources}
    if (_CHECKOUT / "include" / _PACKAGE / "component.h").is_file():
        files[f"{_PACKAGE}/_checkout.py"] = f"CHECKOUT = {str(_CHECKOUT)!r}\n".encode()
    return _write_wheel(wheel_directory, files)


def build_editable(wheel_directory: str, config_settings: Any = None, metadata_directory: Any = None) -> str:
    """A reference to the package where it lies."""
    return _write_wheel(wheel_directory, {f"{_PACKAGE}.pth": f"{_HERE}\n".encode()})


def build_sdist(sdist_directory: str, config_settings: Any = None) -> str:
    raise SystemExit(f"{_PACKAGE} is built from a checkout; there is no other source.")
