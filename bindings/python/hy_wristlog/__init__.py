"""Talks to wrist-worn activity loggers in their docks: configures a logger, says what state it is in, and
retrieves and decodes what it recorded.

    from hy_wristlog import Main, enmLoggerPointer

    with Main() as main:
        main.on_progress = print
        result = main.Retrieve(enmLoggerPointer.LggrPntr_KRVivid)
        if result.code == 0:
            print(result.logger.SerialNumber, result.logger.ActivityArray)

Everything goes through the library's component interface. The shared library is found when the first object
is made: the environment variable HY_WRISTLOG_LIBRARY names it, or it lies beside this package, in the build
folder of its checkout, or where the system's loader looks. `hy_wristlog.simulator` has loggers to try it with.
"""

from . import enums as _enums
from ._values import EMPTY_NUMBER
from ._version import __version__
from ._docks import Dock, dock_in_use, docks, use_all_docks, use_dock
from .enums import *  # noqa: F403
from .errors import (
    ComponentError,
    HyWristlogError,
    LibraryNotFoundError,
    ProgramError,
    ProgramNotFoundError,
    RecordingError,
)
from .loggers import DecodeResult, Pendrel, Subject, VardenLogger
from .main import ConfigureResult, LoggerSeconds, Main, RetrieveResult, StatusResult
from .recording import Event, Recording

__all__ = [
    "EMPTY_NUMBER",
    "ComponentError",
    "ConfigureResult",
    "DecodeResult",
    "Dock",
    "Event",
    "HyWristlogError",
    "LibraryNotFoundError",
    "LoggerSeconds",
    "Main",
    "Pendrel",
    "ProgramError",
    "ProgramNotFoundError",
    "Recording",
    "RecordingError",
    "RetrieveResult",
    "StatusResult",
    "Subject",
    "VardenLogger",
    "__version__",
    "dock_in_use",
    "docks",
    "use_all_docks",
    "use_dock",
]
__all__ += _enums.__all__
