"""What the public objects have in common: life, events, and the way of a workflow."""

import atexit
import signal
import threading
import time
from contextlib import contextmanager
from functools import lru_cache
from typing import Any, Callable, ClassVar, Dict, Iterator, List, Optional, Set, Tuple, Type, TypeVar

from . import _component
from ._attributes import FixedAttributes
from ._component import DIID_HOST_EVENTS, IID_DISPATCH, Connection, Dispatch
from ._sinks import listen
from ._values import Guid

Self = TypeVar("Self", bound="Object")


_MOST_PATIENCE = 2.0
"""Seconds that the interpreter's end waits for the workflows of daemon threads."""

_ending = threading.Event()
_at_work: Set[int] = set()


@contextmanager
def _under_way() -> Iterator[None]:
    """The thread is inside the library, which calls back."""
    _watch_the_end()
    thread = threading.get_ident()
    outermost = thread not in _at_work
    _at_work.add(thread)
    try:
        if _ending.is_set():
            _park()
        yield
    finally:
        if outermost:
            _at_work.discard(thread)


def _park() -> None:
    """A daemon thread stays here for good: one that came back from the library into an interpreter that has
    ended would take the whole process down."""
    if threading.current_thread() is threading.main_thread():
        return
    _at_work.discard(threading.get_ident())
    threading.Event().wait()


@lru_cache(maxsize=None)
def _watch_the_end() -> None:
    # Called after the first object was made: what is registered last runs first, and the finalizers of the objects
    # must run after the daemons have stopped.
    atexit.register(_stop_daemons)


def _stop_daemons() -> None:
    _at_work.discard(threading.get_ident())
    _ending.set()
    deadline = time.monotonic() + _MOST_PATIENCE
    while _at_work and time.monotonic() < deadline:
        time.sleep(0.001)


class Object(FixedAttributes):
    """An object of the library. It belongs to the thread that made it: from another one every use raises
    ComponentError, a RuntimeError. It ends with its last use, with `close()`, or with a `with` block."""

    _class_id: ClassVar[Guid]
    _numbers: ClassVar[Dict[str, int]]

    def __init_subclass__(cls) -> None:
        cls._numbers = {}

    def __init__(self) -> None:
        self._dispatch = _component.create(self._class_id, self._numbers)

    @classmethod
    def _of(cls: Type[Self], address: Optional[int]) -> Optional[Self]:
        """The object at an address; its reference is taken over."""
        if not address:
            return None
        made = cls.__new__(cls)
        made._dispatch = Dispatch(address, cls._numbers)
        return made

    def close(self) -> None:
        """Gives the object back. Afterwards it cannot be used."""
        self._dispatch.close()

    @property
    def closed(self) -> bool:
        return self._dispatch.closed

    def __enter__(self: Self) -> Self:
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()

    def __repr__(self) -> str:
        words = self._about() if not self.closed else "(closed)"
        return f"<{__package__}.{type(self).__name__}{words and ' '}{words}>"

    def _about(self) -> str:
        """What tells the object from others of its class, as far as it can be read here."""
        if not hasattr(type(self), "SerialNumber"):
            return ""
        try:
            return str(getattr(self, "SerialNumber")) or "(no serial number)"
        except RuntimeError:  # of another thread
            return ""


class EventSource(Object):
    """An object that tells events. The callbacks run on the calling thread, while a workflow or a command is
    under way. An exception of a callback does not get lost: it asks for an abort, no more callbacks are run,
    and it is raised when the call is over."""

    on_progress: Optional[Callable[[str], Any]] = None
    """Called with each line about what is being done."""
    on_error: Optional[Callable[[int, str], Any]] = None
    """Called with the number and description of trouble on the link."""
    on_abort: Optional[Callable[[], Any]] = None
    """Called when the link has taken note of an abort."""

    _events: ClassVar[Tuple[Guid, ...]]
    _raised: Optional[BaseException] = None
    _held: Optional[Dispatch] = None
    """The object during a call, also when a callback closes it."""

    def hear(self, events: Guid, event: int, values: List[Any]) -> None:
        """For the component: an event has come."""
        if _ending.is_set():
            _park()
        try:
            if self._raised is None:
                self._tell(event, values)
        except BaseException as raised:  # noqa: B902 - raised again after the call
            self._raised = raised
            self._ask_for_abort()

    def _tell(self, event: int, values: List[Any]) -> None:
        callback = (None, self.on_error, self.on_progress, self.on_abort)[event] if 1 <= event <= 3 else None
        if callback is not None:
            callback(*values)

    def _ask_for_abort(self) -> None:
        pass

    @contextmanager
    def _working(self) -> Iterator[None]:
        """A call during which events come. The component refuses such a call inside another one of the same object,
        which then goes on as before."""
        held = Dispatch(self._dispatch.query(IID_DISPATCH), self._numbers)
        outer, self._held = self._held, held
        former, self._raised = self._raised, None
        connections: List[Connection] = []
        # Connected for the call alone: the component would release a sink that stays connected while the thread or
        # the interpreter is already ending, when no Python can run.
        try:
            with _under_way():
                connections.extend(listen(self._dispatch, events, self) for events in self._events)
                yield
        finally:
            for connection in connections:
                connection.disconnect()
            self._held = outer
            held.close()
            raised, self._raised = self._raised, former
            if raised is not None:
                try:
                    raise raised
                finally:
                    del raised


class Workflows(EventSource):
    """An object whose calls take long: they let the host live, and can be interrupted."""

    on_wait: Optional[Callable[[], Any]] = None
    """Called when bytes of a logger come, and at least every 50 ms while the library waits for them; every 50 ms in
    a transfer and about every millisecond otherwise, when `WakeOnInput` is False."""
    on_download: Optional[Callable[[int, int], Any]] = None
    """Called with the bytes of a recording that have come, and how many are expected (0: not known)."""

    _interrupted = False
    _host_events = bytes(DIID_HOST_EVENTS)

    def hear(self, events: Guid, event: int, values: List[Any]) -> None:
        if self._interrupted and self._raised is None:
            self._raised = KeyboardInterrupt()
            self._ask_for_abort()
        super().hear(events, event if bytes(events) != self._host_events else -event, values)

    def _tell(self, event: int, values: List[Any]) -> None:
        if event > 0:
            super()._tell(event, values)
            return
        callback = {-1: self.on_wait, -2: self.on_download}.get(event)
        if callback is not None:
            callback(*values)

    @contextmanager
    def _working(self) -> Iterator[None]:
        with _noting_interrupts(self), super()._working():
            yield


@contextmanager
def _noting_interrupts(workflows: Workflows) -> Iterator[None]:
    """Python's own answer to Ctrl-C is an exception between any two steps, so also where the library has just
    called back, and where it would be lost. So it is noted, and raised when the call is over."""
    replaces = (
        threading.current_thread() is threading.main_thread()
        and signal.getsignal(signal.SIGINT) is signal.default_int_handler
    )

    def note(*_: Any) -> None:
        workflows._interrupted = True

    if not replaces:
        yield
        return
    workflows._interrupted = False
    signal.signal(signal.SIGINT, note)
    try:
        yield
    finally:
        signal.signal(signal.SIGINT, signal.default_int_handler)
        interrupted, workflows._interrupted = workflows._interrupted, False
    if interrupted:
        raise KeyboardInterrupt
