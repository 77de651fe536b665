"""Simulated loggers in simulated time: to develop and test a host without a dock.

    with Bench("vivid") as bench:
        ...                      # Main().Configure(...)
        bench.wear(timedelta(days=1))
        ...                      # Main().Retrieve(...)
"""

import ctypes
from datetime import datetime, timedelta, timezone
from typing import Any, Optional, Union

from . import _library
from ._attributes import FixedAttributes

__all__ = ["MODELS", "Bench", "SimulatorError"]

MODELS = ("vivid", "kestrin2", "pendrel13", "pendrel14", "pendrel27")
_NO_BENCH, _ARGUMENT = -1, -2

Duration = Union[timedelta, float, int]
"""A timedelta, or seconds."""


class SimulatorError(RuntimeError):
    """The simulated world does not allow it, or the bench is not one of this thread."""


def _functions() -> ctypes.CDLL:
    library = _library.simulator()
    library.hySimulatorLastError.restype = ctypes.c_char_p
    return library


def _check(library: ctypes.CDLL, result: int) -> None:
    if result != 0:
        words = library.hySimulatorLastError().decode("utf-8", "replace")
        raise ValueError(words) if result == _ARGUMENT else SimulatorError(words)


def _seconds(duration: Duration) -> ctypes.c_double:
    return ctypes.c_double(duration.total_seconds() if isinstance(duration, timedelta) else duration)


def _whole(kind: Any, value: int, what: str) -> Any:
    """A number in a C type, which by itself would keep the lowest bits of any."""
    made = kind(value)
    if made.value != value:
        raise ValueError(f"{what}: {value} is out of range")
    return made


def _text(words: str) -> bytes:
    if "\0" in words:
        raise ValueError("a text has no NUL inside")
    return words.encode()


class Bench(FixedAttributes):
    """A world of its own for the calling thread: simulated time, one dock, and a healthy logger in it. From
    here until `close()`, or the end of a `with` block, everything that this thread does with the library
    happens there; objects of the library should not be taken from one world to another.

    `model` is one of MODELS; `zone` the machine's zone by its catalogue key, such as "Eastern Standard Time";
    `begins` the moment at which the world begins: aware, of the years 1971 to 2037.

    Raises ValueError for what is not known, SimulatorError inside a workflow, LibraryNotFoundError.
    """

    model = ""

    def __init__(
        self, model: str = "vivid", zone: Optional[str] = None, begins: Optional[datetime] = None
    ) -> None:
        if begins is not None and begins.utcoffset() is None:
            raise ValueError("begins: a datetime with a time zone is needed")
        self._library = _functions()
        number = ctypes.c_int32()
        since = ctypes.c_int64(0 if begins is None else int(begins.timestamp()))
        result = self._library.hySimulatorOpen(
            _text(model), None if zone is None else _text(zone), since, ctypes.byref(number)
        )
        _check(self._library, result)
        self.model = model
        self._number = ctypes.c_int32(number.value)

    def _call(self, name: str, *arguments: Any) -> None:
        _check(self._library, getattr(self._library, name)(self._number, *arguments))

    def close(self) -> None:
        """Brings the thread's former world back. Raises SimulatorError inside a workflow."""
        if self._number.value != 0:
            self._call("hySimulatorClose")
            self._number = ctypes.c_int32(0)

    def __enter__(self) -> "Bench":
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()

    @property
    def elapsed(self) -> float:
        """Simulated seconds since the world began."""
        seconds = ctypes.c_double()
        self._call("hySimulatorElapsed", ctypes.byref(seconds))
        return seconds.value

    @property
    def now(self) -> datetime:
        """The simulated time, in UTC."""
        seconds = ctypes.c_int64()
        self._call("hySimulatorNow", ctypes.byref(seconds))
        return datetime.fromtimestamp(seconds.value, timezone.utc)

    def set_up(self, mode: int = 1, epoch: int = 30) -> None:
        """Sets the logger up for a recording without the dock; `mode` is the logger's own number of it."""
        self._call("hySimulatorSetUp", _whole(ctypes.c_int32, mode, "mode"), _whole(ctypes.c_int32, epoch, "epoch"))

    def wear(self, duration: Duration, seed: int = 1) -> None:
        """Somebody takes the logger out of its dock, wears it, and puts it back. The same seed gives the same
        days."""
        self._call("hySimulatorWear", _seconds(duration), _whole(ctypes.c_uint32, seed, "seed"))

    def advance(self, duration: Duration) -> None:
        """Lets time pass."""
        self._call("hySimulatorAdvance", _seconds(duration))

    def act(self, deed: str) -> None:
        """What happens to the hardware: "pull out", "insert", "unplug", "plug", "power reset", "hold port",
        "free port", "lock up", "reconnect"."""
        self._call("hySimulatorDo", _text(deed))

    def set_fault(self, name: str, skip: int = 0, times: int = 1) -> None:
        """Lets `skip` occurrences pass and spoils `times` of them; -1: all that follow. Any model: "lose echo",
        "alter echo", "delay echo", "lose to pc", "lose to logger", "alter to pc", "alter to logger", "silent";
        Vivid and Kestrin 2: "bad line checksum", "ignore command", "refuse clock", "misstore config",
        "bad config checksum". `wristlog simulate --help` lists the others, with hyphens in the place of blanks."""
        skipped, struck = _whole(ctypes.c_int32, skip, "skip"), _whole(ctypes.c_int32, times, "times")
        self._call("hySimulatorSetFault", _text(name), skipped, struck)

    def after_bytes(self, count: int, deed: str) -> None:
        """Once so many more bytes have passed the line: "cut", "pull out", "unplug"."""
        self._call("hySimulatorAfterBytes", _whole(ctypes.c_uint64, count, "count"), _text(deed))
