"""Event sinks: components made in Python, which the library calls."""

import ctypes
import threading
from typing import Any, Callable, Dict, List, Protocol

from ._component import (
    E_INVALIDARG,
    E_NOINTERFACE,
    E_NOTIMPL,
    E_POINTER,
    IID_DISPATCH,
    IID_UNKNOWN,
    S_OK,
    Connection,
    DispParams,
    Interface,
)
from ._values import VT_BSTR, VT_BYREF, VT_I4, Guid, Variant, text_at

_Pointer = ctypes.c_void_p
_RESULT = ctypes.c_uint32
_lock = threading.RLock()


def _slot(*types: Any) -> Callable[[Callable[..., int]], Any]:
    """Makes a function that the library can call."""
    return ctypes.CFUNCTYPE(*types)


class Hearer(Protocol):
    """Is told events. `hear` must raise nothing."""

    def hear(self, events: Guid, event: int, values: List[Any]) -> None: ...


class _Sink(ctypes.Structure):
    """The component that the library points to. It lives as long as somebody has a reference to it."""

    _fields_ = [("lpVtbl", _Pointer)]

    def __init__(self, events: Guid, hearer: Hearer) -> None:
        super().__init__(ctypes.addressof(_functions))
        self.events = events
        self.hearer = hearer
        self.references = 1


_living: Dict[int, _Sink] = {}


def _same(one: Guid, other: Guid) -> bool:
    return bytes(one) == bytes(other)


@_slot(_RESULT, _Pointer, ctypes.POINTER(Guid), ctypes.POINTER(_Pointer))
def _query_interface(address: int, interface: Any, found: Any) -> int:
    if not found:
        return E_POINTER
    found[0] = None
    sink = _living.get(address)
    if sink is None or not interface:
        return E_POINTER
    if not any(_same(interface[0], known) for known in (IID_UNKNOWN, IID_DISPATCH, sink.events)):
        return E_NOINTERFACE
    with _lock:
        sink.references += 1
    found[0] = address
    return S_OK


@_slot(ctypes.c_uint32, _Pointer)
def _add_reference(address: int) -> int:
    with _lock:
        sink = _living[address]
        sink.references += 1
        return sink.references


@_slot(ctypes.c_uint32, _Pointer)
def _release(address: int) -> int:
    with _lock:
        sink = _living[address]
        sink.references -= 1
        if sink.references == 0:
            del _living[address]
        return sink.references


@_slot(_RESULT, _Pointer, ctypes.POINTER(ctypes.c_uint32))
def _count_type_infos(address: int, count: Any) -> int:
    if not count:
        return E_POINTER
    count[0] = 0
    return S_OK


@_slot(_RESULT, _Pointer, ctypes.c_uint32, ctypes.c_uint32, ctypes.POINTER(_Pointer))
def _get_type_info(address: int, index: int, locale: int, found: Any) -> int:
    if found:
        found[0] = None
    return E_NOTIMPL


@_slot(_RESULT, *[_Pointer] * 3, *[ctypes.c_uint32] * 2, _Pointer)
def _get_numbers(*_: Any) -> int:
    return E_NOTIMPL


def _value_of(argument: Variant) -> Any:
    if argument.vt == VT_BYREF | VT_BSTR and argument.pointer:
        return text_at(_Pointer.from_address(argument.pointer).value)
    if argument.vt == VT_BSTR:
        return text_at(argument.pointer)
    return argument.lVal if argument.vt == VT_I4 else None


@_slot(
    _RESULT,
    _Pointer,
    ctypes.c_int32,
    _Pointer,
    ctypes.c_uint32,
    ctypes.c_uint16,
    ctypes.POINTER(DispParams),
    _Pointer,
    _Pointer,
    _Pointer,
)
def _invoke(
    address: int, event: int, _: Any, locale: int, kinds: int, params: Any, *outputs: Any
) -> int:
    sink = _living.get(address)
    if sink is None or not params:
        return E_INVALIDARG
    given = params[0]
    values = [_value_of(given.rgvarg[place]) for place in reversed(range(given.cArgs))]
    sink.hearer.hear(sink.events, event, values)
    return S_OK


class _Functions(ctypes.Structure):
    _fields_ = [(f"slot{slot}", _Pointer) for slot in range(7)]


_slots = (
    _query_interface,
    _add_reference,
    _release,
    _count_type_infos,
    _get_type_info,
    _get_numbers,
    _invoke,
)
_functions = _Functions(*(ctypes.cast(function, _Pointer).value for function in _slots))


def listen(source: Interface, events: Guid, hearer: Hearer) -> Connection:
    """Lets `hearer` hear an event set of an object until the connection is broken or the object ends."""
    sink = _Sink(events, hearer)
    address = ctypes.addressof(sink)
    _living[address] = sink
    try:
        return source.connect(events, address)
    finally:
        _release(address)
