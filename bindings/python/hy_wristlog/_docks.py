"""The docks of the machine, and the one that a thread works with.

    for dock in docks():
        print(dock.name, dock.model, dock.port)
    use_dock("usb-1-1.4")
    ...                      # Main().Retrieve(...)

A thread that chooses a dock runs the workflows as they are, and they meet that dock alone. Several docks are worked
with at once by threads, each with a `Main` of its own.
"""

from typing import List, NamedTuple, Optional, Tuple

from .enums import enmLoggerPointer
from .main import Main

__all__ = ["Dock", "dock_in_use", "docks", "use_all_docks", "use_dock"]


class Dock(NamedTuple):
    """A dock that is connected or declared, whether a logger sits in it or not."""

    name: str
    """What it is called as long as it is plugged in at the same place, or its section in Docks.INI."""
    other_names: Tuple[str, ...]
    """What it can be called as well: its serial number, its device or address, its port."""
    model: enmLoggerPointer
    """LggrPntr_Pendreader for a plain serial port that is declared."""
    port: Optional[int]
    """Its COM port."""


def docks() -> List[Dock]:
    """All docks, also where the thread has chosen one. No port is opened. Raises HyWristlogError."""
    with Main() as main:
        return [
            Dock(name, tuple(main.NamesOfDock(name)[1:]), main.ModelOfDock(name), main.PortOfDock(name) or None)
            for name in main.DockNames
        ]


def use_dock(name: str, model: Optional[enmLoggerPointer] = None) -> None:
    """From now on the calling thread has one dock: the one that any of its names calls, in any case. With `model` it
    may also be the path or address of a device that is not declared. Objects that the thread has made stay usable.

    Raises HyWristlogError: 10003 (NotFound) for a name that no dock has, 10020 (TooManyDocks) for one that several
    have, 10009 (WrongLogger) for a dock of another model, 5 (InvalidCall) inside a workflow.
    """
    if not name:
        raise ValueError("the name of a dock is needed")
    with Main() as main:
        if model is None:
            main.UseDock(name)
        else:
            main.UseDevice(name, model)


def use_all_docks() -> None:
    """The calling thread has all docks again. Raises HyWristlogError inside a workflow."""
    with Main() as main:
        main.UseDock("")


def dock_in_use() -> Optional[str]:
    """The name of the dock that the calling thread has chosen; None when it has all."""
    with Main() as main:
        return main.DockInUse or None
