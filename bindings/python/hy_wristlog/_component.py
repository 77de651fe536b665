"""The component's interfaces, called through their vtables."""

import ctypes
import weakref
from typing import Any, Dict, List, NoReturn, Optional, Sequence, Tuple

from . import _library
from ._values import (
    DISP_E_PARAMNOTFOUND,
    VT_BYREF,
    VT_VARIANT,
    Given,
    Guid,
    Variant,
    new_units,
    release,
    take_text,
)
from .errors import ComponentError, HyWristlogError

S_OK = 0
E_NOTIMPL = 0x80004001
E_NOINTERFACE = 0x80004002
E_POINTER = 0x80004003
E_OUTOFMEMORY = 0x8007000E
E_INVALIDARG = 0x80070057
RPC_E_DISCONNECTED = 0x80010108
RPC_E_WRONG_THREAD = 0x8001010E
DISP_E_MEMBERNOTFOUND = 0x80020003
DISP_E_TYPEMISMATCH = 0x80020005
DISP_E_UNKNOWNNAME = 0x80020006
DISP_E_BADVARTYPE = 0x80020008
DISP_E_EXCEPTION = 0x80020009
DISP_E_OVERFLOW = 0x8002000A
DISP_E_BADPARAMCOUNT = 0x8002000E
DISP_E_PARAMNOTOPTIONAL = 0x8002000F
FAILURE_BASE = 0x800A0000
MOST_FAILURE_NUMBER = 0xFFFF

METHOD, PROPERTYGET, PROPERTYPUT = 1, 2, 4
DISPID_PROPERTYPUT = -3

IID_UNKNOWN = Guid("00000000-0000-0000-c000-000000000046")
IID_CLASS_FACTORY = Guid("00000001-0000-0000-c000-000000000046")
IID_DISPATCH = Guid("00020400-0000-0000-c000-000000000046")
IID_SERIES_READER = Guid("9b1f6d2c-4e57-4c8a-a13e-70d8256bf419")
IID_CONNECTION_POINT_CONTAINER = Guid("b196b284-bab4-101a-b69c-00aa00341d07")

CLSID_MAIN = Guid("7857d1d2-118b-4fa4-bab5-c02113e3afd4")
CLSID_VARDEN_LOGGER = Guid("3a46e78c-e35a-4004-897d-391e0b1da357")
CLSID_PENDREL = Guid("f8482f2a-1519-4c5b-83a7-5b67441aabca")
CLSID_SUBJECT = Guid("d273891e-e0f6-44a5-9b7f-196e7ae7171b")
DIID_VARDEN_LOGGER_EVENTS = Guid("02832944-44d6-455e-a5c1-9f2bf87aa153")
DIID_PENDREL_EVENTS = Guid("aa92b71c-e9b7-43f1-bd99-92b3e9d7c23d")
DIID_HOST_EVENTS = Guid("5d0f3c6e-27b4-4f0a-9361-8a4ce21570bd")

# Results are read as unsigned numbers, as they are written.
_RESULT = ctypes.c_uint32
_SIZE = ctypes.sizeof(ctypes.c_void_p)
_Pointer = ctypes.c_void_p
_QUERY = ctypes.CFUNCTYPE(_RESULT, _Pointer, ctypes.POINTER(Guid), ctypes.POINTER(_Pointer))
_CREATE = ctypes.CFUNCTYPE(
    _RESULT, _Pointer, _Pointer, ctypes.POINTER(Guid), ctypes.POINTER(_Pointer)
)
_NAMES = ctypes.CFUNCTYPE(
    _RESULT,
    _Pointer,
    ctypes.POINTER(Guid),
    ctypes.POINTER(_Pointer),
    ctypes.c_uint32,
    ctypes.c_uint32,
    ctypes.POINTER(ctypes.c_int32),
)
_READ_SERIES = ctypes.CFUNCTYPE(_RESULT, _Pointer, ctypes.c_int32, ctypes.POINTER(Variant))
_UNADVISE = ctypes.CFUNCTYPE(_RESULT, _Pointer, ctypes.c_uint32)
_ADVISE = ctypes.CFUNCTYPE(_RESULT, _Pointer, _Pointer, ctypes.POINTER(ctypes.c_uint32))


class DispParams(ctypes.Structure):
    _fields_ = [
        ("rgvarg", ctypes.POINTER(Variant)),
        ("rgdispidNamedArgs", ctypes.POINTER(ctypes.c_int32)),
        ("cArgs", ctypes.c_uint32),
        ("cNamedArgs", ctypes.c_uint32),
    ]


class ExcepInfo(ctypes.Structure):
    _fields_ = [
        ("wCode", ctypes.c_uint16),
        ("wReserved", ctypes.c_uint16),
        ("bstrSource", _Pointer),
        ("bstrDescription", _Pointer),
        ("bstrHelpFile", _Pointer),
        ("dwHelpContext", ctypes.c_uint32),
        ("pvReserved", _Pointer),
        ("pfnDeferredFillIn", _Pointer),
        ("scode", ctypes.c_uint32),
    ]

    def take(self) -> HyWristlogError:
        """The exception for it. Frees the strings."""
        number = self.scode - FAILURE_BASE
        if not 1 <= number <= MOST_FAILURE_NUMBER:
            number = ctypes.c_int32(self.scode).value
        source, description = take_text(self.bstrSource), take_text(self.bstrDescription)
        take_text(self.bstrHelpFile)
        return HyWristlogError(number, source, description)


_INVOKE = ctypes.CFUNCTYPE(
    _RESULT,
    _Pointer,
    ctypes.c_int32,
    ctypes.POINTER(Guid),
    ctypes.c_uint32,
    ctypes.c_uint16,
    ctypes.POINTER(DispParams),
    ctypes.POINTER(Variant),
    ctypes.POINTER(ExcepInfo),
    ctypes.POINTER(ctypes.c_uint32),
)

_WORDS = {
    E_NOINTERFACE: "the object has no such interface",
    E_OUTOFMEMORY: "the component ran out of memory",
    RPC_E_DISCONNECTED: "the object has ended, or the thread that made it has",
    RPC_E_WRONG_THREAD: "the object belongs to the thread that made it, and this is another one",
    DISP_E_MEMBERNOTFOUND: "the object has no such member, or it cannot be used that way",
    DISP_E_UNKNOWNNAME: "the object has no member of that name",
    DISP_E_TYPEMISMATCH: "a value of another type is needed",
    DISP_E_BADVARTYPE: "a value of that type cannot be passed",
    DISP_E_OVERFLOW: "the value does not fit",
    DISP_E_BADPARAMCOUNT: "the number of arguments is wrong",
    DISP_E_PARAMNOTFOUND: "there is no such argument",
    DISP_E_PARAMNOTOPTIONAL: "an argument is missing",
}
_TYPE_ERRORS = {
    DISP_E_TYPEMISMATCH,
    DISP_E_BADVARTYPE,
    DISP_E_BADPARAMCOUNT,
    DISP_E_PARAMNOTFOUND,
    DISP_E_PARAMNOTOPTIONAL,
}


def refuse(result: int, about: str = "the component") -> NoReturn:
    """Raises the exception for a result code below zero; `about` says what was refused."""
    words = f"{about}: {_WORDS.get(result, 'the call was refused')} (0x{result:08X})"
    if result in _TYPE_ERRORS:
        raise TypeError(words)
    if result == DISP_E_OVERFLOW:
        raise ValueError(words)
    if result in (DISP_E_MEMBERNOTFOUND, DISP_E_UNKNOWNNAME):
        raise AttributeError(words)
    if result == E_OUTOFMEMORY:
        raise MemoryError(words)
    raise ComponentError(result, words)


def _failed(result: int) -> bool:
    return result >= 0x80000000


class Interface:
    """A counted reference to an interface. It is given back by `close`, with the last use of this object, or
    when the interpreter ends, whichever comes first; that may be on any thread."""

    def __init__(self, address: int) -> None:
        self._address = address
        self._release = weakref.finalize(self, release, address)

    @property
    def address(self) -> int:
        if not self._release.alive:
            raise ComponentError(RPC_E_DISCONNECTED, "the object has been closed")
        return self._address

    @property
    def closed(self) -> bool:
        return not self._release.alive

    def close(self) -> None:
        self._release()

    def method(self, slot: int, prototype: Any) -> Any:
        table = _Pointer.from_address(self.address).value or 0
        return prototype(_Pointer.from_address(table + slot * _SIZE).value)

    def query(self, interface: Guid) -> int:
        """The address of another interface of the object, with a reference for the caller."""
        found = _Pointer()
        result = self.method(0, _QUERY)(self.address, interface, found)
        if _failed(result):
            refuse(result, "QueryInterface")
        return found.value or 0

    def connect(self, events: Guid, sink: int) -> "Connection":
        """Lets the sink at that address hear an event set until the connection is closed."""
        container = Interface(self.query(IID_CONNECTION_POINT_CONTAINER))
        found = _Pointer()
        try:
            result = container.method(4, _QUERY)(container.address, events, found)
        finally:
            container.close()
        if _failed(result):
            refuse(result, "FindConnectionPoint")
        return Connection(found.value or 0, sink)


class Connection(Interface):
    """A connection point with a sink on it."""

    def __init__(self, address: int, sink: int) -> None:
        super().__init__(address)
        cookie = ctypes.c_uint32()
        result = self.method(5, _ADVISE)(self.address, sink, cookie)
        if _failed(result):
            refuse(result, "Advise")
        self.cookie = cookie.value

    def disconnect(self) -> None:
        """May be called on the thread of the object alone."""
        self.method(6, _UNADVISE)(self.address, self.cookie)
        self.close()


class Dispatch(Interface):
    """An object of one of the classes, used by the names of its members."""

    def __init__(self, address: int, numbers: Optional[Dict[str, int]] = None) -> None:
        super().__init__(address)
        self._numbers: Dict[str, int] = numbers if numbers is not None else {}

    def number(self, name: str) -> int:
        found = self._numbers.get(name)
        if found is None:
            found = self._numbers[name] = self.numbers(name)[0]
        return found

    def numbers(self, *names: str) -> List[int]:
        """The numbers of a member and of its arguments, by their names."""
        units = [new_units(name) for name in names]
        pointers = (_Pointer * len(names))(*map(ctypes.addressof, units))
        found = (ctypes.c_int32 * len(names))()
        result = self.method(5, _NAMES)(self.address, Guid(), pointers, len(names), 0, found)
        if _failed(result):
            refuse(result, names[0])
        return list(found)

    def invoke(
        self, name: str, kinds: int, values: Sequence[Any], named: Sequence[Tuple[int, Any]] = ()
    ) -> Variant:
        """One call. The caller clears the answer. Named arguments are given by their numbers."""
        number = self.number(name)
        count = len(values) + len(named)
        arguments = (Variant * count)()
        given = Given()
        # First the named arguments, then the others, the last of these first.
        in_order = [value for _, value in named] + list(reversed(values))
        for place, value in enumerate(in_order):
            try:
                given.set(arguments[place], value)
            except (TypeError, ValueError) as why:
                raise type(why)(f"{name}: {why}") from None
        names = (ctypes.c_int32 * len(named))(*(number for number, _ in named))
        params = DispParams(arguments, names, count, len(named))
        answer, exception, at_fault = Variant(), ExcepInfo(), ctypes.c_uint32(count)
        result = self.method(6, _INVOKE)(
            self.address, number, Guid(), 0, kinds, params, answer, exception, at_fault
        )
        if result == DISP_E_EXCEPTION:
            raise exception.take()
        if _failed(result):
            answer.clear()
            about = name
            if kinds == METHOD and at_fault.value < count:
                about = f"{name}, argument {self._position(at_fault.value, count, named)}"
            refuse(result, about)
        return answer

    @staticmethod
    def _position(place: int, count: int, named: Sequence[Tuple[int, Any]]) -> int:
        return named[place][0] + 1 if place < len(named) else count - place

    def get(self, name: str) -> Variant:
        return self.invoke(name, PROPERTYGET, ())

    def get_series(self, name: str) -> Variant:
        """A series as plain numbers. The caller clears the answer."""
        answer = Variant()
        reader = Interface(self.query(IID_SERIES_READER))
        try:
            result = reader.method(3, _READ_SERIES)(reader.address, self.number(name), answer)
        finally:
            reader.close()
        if _failed(result):
            refuse(result, name)
        return answer

    def put(self, name: str, value: Any) -> None:
        self.invoke(name, PROPERTYPUT, (), [(DISPID_PROPERTYPUT, value)]).clear()

    def call(self, name: str, *values: Any) -> Variant:
        return self.invoke(name, METHOD, values)


def create(class_id: Guid, numbers: Optional[Dict[str, int]] = None) -> Dispatch:
    """Makes an object of a class. It belongs to the calling thread."""
    found = _Pointer()
    get_class_object = _library.component().DllGetClassObject
    get_class_object.restype = _RESULT
    result = get_class_object(ctypes.byref(class_id), ctypes.byref(IID_CLASS_FACTORY), ctypes.byref(found))
    if _failed(result):
        refuse(result, "DllGetClassObject")
    factory = Interface(found.value or 0)
    made = _Pointer()
    try:
        result = factory.method(3, _CREATE)(factory.address, None, IID_DISPATCH, made)
    finally:
        factory.close()
    if _failed(result):
        refuse(result, "CreateInstance")
    return Dispatch(made.value or 0, numbers)


def reference_to(variable: Variant, kind: int = VT_VARIANT) -> Variant:
    """An argument that refers to a variable: to the whole variant, or to its content of that type."""
    argument = Variant()
    argument.vt = VT_BYREF | kind
    argument.pointer = ctypes.addressof(variable) + (0 if kind == VT_VARIANT else Variant.content.offset)
    return argument
