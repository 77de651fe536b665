"""The component's values: strings, variants and arrays, and the memory that they own."""

import ctypes
import sys
from array import array
from typing import Any, List, Optional

VT_EMPTY, VT_NULL, VT_I2, VT_I4, VT_R4, VT_R8 = range(6)
VT_DATE, VT_BSTR, VT_DISPATCH, VT_ERROR, VT_BOOL, VT_VARIANT, VT_UNKNOWN = range(7, 14)
VT_I1, VT_UI1, VT_I8 = 16, 17, 20
VT_ARRAY, VT_BYREF, VT_TYPEMASK = 0x2000, 0x4000, 0x0FFF
FADF_VARIANT = 0x800
DISP_E_PARAMNOTFOUND = 0x80020004

EMPTY_NUMBER = -(2**31)
"""An element of an activity or steps series in which nothing was stored."""

_UTF16 = "utf-16-le" if sys.byteorder == "little" else "utf-16-be"

_libc = ctypes.CDLL(None)
free = _libc.free
free.argtypes, free.restype = [ctypes.c_void_p], None


class Guid(ctypes.Structure):
    _fields_ = [
        ("Data1", ctypes.c_uint32),
        ("Data2", ctypes.c_uint16),
        ("Data3", ctypes.c_uint16),
        ("Data4", ctypes.c_uint8 * 8),
    ]

    def __init__(self, text: str = "00000000-0000-0000-0000-000000000000") -> None:
        """Of text like 00020400-0000-0000-c000-000000000046."""
        first, second, third, fourth, fifth = text.split("-")
        tail = (ctypes.c_uint8 * 8)(*bytes.fromhex(fourth + fifth))
        super().__init__(int(first, 16), int(second, 16), int(third, 16), tail)


class ArrayBound(ctypes.Structure):
    _fields_ = [("cElements", ctypes.c_uint32), ("lLbound", ctypes.c_int32)]


class Array(ctypes.Structure):
    _fields_ = [
        ("cDims", ctypes.c_uint16),
        ("fFeatures", ctypes.c_uint16),
        ("cbElements", ctypes.c_uint32),
        ("cLocks", ctypes.c_uint32),
        ("pvData", ctypes.c_void_p),
        ("rgsabound", ArrayBound * 1),
    ]


class _Record(ctypes.Structure):
    _fields_ = [("pvRecord", ctypes.c_void_p), ("pRecInfo", ctypes.c_void_p)]


class _Content(ctypes.Union):
    _fields_ = [
        ("llVal", ctypes.c_int64),
        ("lVal", ctypes.c_int32),
        ("bVal", ctypes.c_uint8),
        ("iVal", ctypes.c_int16),
        ("fltVal", ctypes.c_float),
        ("dblVal", ctypes.c_double),
        ("boolVal", ctypes.c_int16),
        ("scode", ctypes.c_uint32),
        ("pointer", ctypes.c_void_p),
        ("record", _Record),
    ]


class Variant(ctypes.Structure):
    """A value and its type. What it owns is given back by `clear` alone."""

    _anonymous_ = ["content"]
    _fields_ = [("vt", ctypes.c_uint16), ("reserved", ctypes.c_uint16 * 3), ("content", _Content)]

    def clear(self) -> None:
        """Frees what the component put there."""
        if not self.vt & VT_BYREF and self.pointer:
            if self.vt & VT_ARRAY:
                _destroy_array(self.pointer)
            elif self.vt == VT_BSTR:
                free_string(self.pointer)
            elif self.vt in (VT_DISPATCH, VT_UNKNOWN):
                release(self.pointer)
        ctypes.memset(ctypes.byref(self), 0, ctypes.sizeof(self))


_RELEASE = ctypes.CFUNCTYPE(ctypes.c_uint32, ctypes.c_void_p)
_POINTER_SIZE = ctypes.sizeof(ctypes.c_void_p)


def release(address: int) -> int:
    """Gives a reference to an interface back."""
    table = ctypes.c_void_p.from_address(address).value or 0
    left: int = _RELEASE(ctypes.c_void_p.from_address(table + 2 * _POINTER_SIZE).value or 0)(address)
    return left


def text_at(address: Optional[int]) -> str:
    """A counted string's text. Unpaired surrogates stay."""
    if not address:
        return ""
    length = ctypes.c_uint32.from_address(address - 4).value
    return ctypes.string_at(address, length).decode(_UTF16, "surrogatepass")


def free_string(address: Optional[int]) -> None:
    if address:
        free(address - 4)


def take_text(address: Optional[int]) -> str:
    """The text of a string that the component gave away."""
    text = text_at(address)
    free_string(address)
    return text


def new_units(text: str) -> Any:
    """Text as a name is passed: UTF-16 that ends with a NUL."""
    return ctypes.create_string_buffer(text.encode(_UTF16, "surrogatepass") + b"\0\0")


def _element_bytes(data: Array) -> memoryview:
    size = data.rgsabound[0].cElements * data.cbElements
    return memoryview((ctypes.c_char * size).from_address(data.pvData)).cast("B")


def _destroy_array(address: int) -> None:
    data = Array.from_address(address)
    if data.fFeatures & FADF_VARIANT and data.pvData:
        for element in (Variant * data.rgsabound[0].cElements).from_address(data.pvData):
            element.clear()
    free(data.pvData)
    free(address)


def _series_bytes(variant: Variant, kind: int) -> memoryview:
    """The elements of a series of that type."""
    if variant.vt == VT_EMPTY:
        return memoryview(b"")
    if variant.vt != VT_ARRAY | kind:
        raise ValueError(f"a series of type {kind} was expected, not type {variant.vt}")
    return _element_bytes(Array.from_address(variant.pointer))


_KINDS = {"i": VT_I4, "f": VT_R4, "b": VT_I1, "d": VT_DATE}


def numbers(variant: Variant, code: str) -> "array[Any]":
    """A series in an array of that type: "i" for whole numbers, "f" for real ones, "d" for dates, "b" for truth values,
    where 255 stands for None as -1."""
    series = array(code)
    series.frombytes(_series_bytes(variant, _KINDS[code]))
    return series


_TRUTHS = {0: False, 1: True, 255: None}


def truths(variant: Variant) -> List[Optional[bool]]:
    """A series of truth values; None where nothing was stored."""
    values = _series_bytes(variant, VT_I1).tobytes()
    usual = max(_TRUTHS, key=values.count)
    if values.count(usual) < len(values) * 7 // 8:
        return list(map(_TRUTHS.__getitem__, values))
    # Hardly anything but one value, as in most series: the others are searched for.
    series = [_TRUTHS[usual]] * len(values)
    for value in _TRUTHS.keys() - {usual}:
        at = values.find(value)
        while at >= 0:
            series[at] = _TRUTHS[value]
            at = values.find(value, at + 1)
    return series


def octets(variant: Variant) -> bytes:
    return _series_bytes(variant, VT_UI1).tobytes()


def texts(variant: Variant) -> List[str]:
    """An array of texts, which is then cleared."""
    try:
        if variant.vt == VT_EMPTY:
            return []
        if variant.vt != VT_ARRAY | VT_VARIANT:
            raise ValueError(f"an array was expected, not type {variant.vt}")
        data = Array.from_address(variant.pointer)
        elements = (Variant * data.rgsabound[0].cElements).from_address(data.pvData)
        if any(element.vt != VT_BSTR for element in elements):
            raise ValueError("an element that is no text")
        return [text_at(element.pointer) for element in elements]
    finally:
        variant.clear()


class Given:
    """Values on their way to the component, in memory of Python's own: as long as this lives, the variants
    may be read, but nothing in them may be kept or freed."""

    def __init__(self) -> None:
        self._kept: List[Any] = []

    def set(self, variant: Variant, value: Any) -> None:
        """Raises TypeError for what has no counterpart."""
        if value is None:
            variant.vt, variant.scode = VT_ERROR, DISP_E_PARAMNOTFOUND
        elif isinstance(value, Variant):
            ctypes.memmove(ctypes.byref(variant), ctypes.byref(value), ctypes.sizeof(Variant))
        elif isinstance(value, bool):
            variant.vt, variant.boolVal = VT_BOOL, -1 if value else 0
        elif isinstance(value, int):
            self._set_int(variant, value)
        elif isinstance(value, float):
            variant.vt, variant.dblVal = VT_R8, value
        elif isinstance(value, str):
            self._set_text(variant, value)
        elif isinstance(value, bytes):
            block = ctypes.create_string_buffer(value)
            self._kept.append(block)
            self._set_array(variant, VT_UI1, 1, len(value), ctypes.addressof(block))
        elif isinstance(value, array):
            self._set_numbers(variant, value)
        elif isinstance(value, list):
            self._set_truths(variant, value)
        elif hasattr(value, "address"):
            variant.vt, variant.pointer = VT_DISPATCH, value.address
            self._kept.append(value)
        else:
            raise TypeError(f"{type(value).__name__} is nothing that the component knows")

    @staticmethod
    def _set_int(variant: Variant, value: int) -> None:
        if -(2**31) <= value < 2**31:
            variant.vt, variant.lVal = VT_I4, value
        elif -(2**63) <= value < 2**63:
            variant.vt, variant.llVal = VT_I8, value
        else:
            raise ValueError("the number is too great")

    def _set_text(self, variant: Variant, text: str) -> None:
        units = text.encode(_UTF16, "surrogatepass")
        if len(units) > 0x7FFFFFF0:
            raise ValueError("the text is too long")
        block = ctypes.create_string_buffer(len(units).to_bytes(4, sys.byteorder) + units + b"\0\0")
        self._kept.append(block)
        variant.vt, variant.pointer = VT_BSTR, ctypes.addressof(block) + 4

    def _set_array(self, variant: Variant, kind: int, size: int, count: int, data: int) -> None:
        features = FADF_VARIANT if kind == VT_VARIANT else 0
        made = Array(1, features, size, 0, data, (ArrayBound * 1)(ArrayBound(count, 0)))
        self._kept.append(made)
        variant.vt, variant.pointer = VT_ARRAY | kind, ctypes.addressof(made)

    def _set_numbers(self, variant: Variant, series: "array[Any]") -> None:
        if series.typecode not in ("i", "f"):
            raise TypeError(f'a series is an array of type "i" or "f", not "{series.typecode}"')
        kind = VT_I4 if series.typecode == "i" else VT_R4
        copy = array(series.typecode, series)
        self._kept.append(copy)
        self._set_array(variant, kind, 4, len(copy), copy.buffer_info()[0])

    def _set_truths(self, variant: Variant, series: List[Optional[bool]]) -> None:
        step = ctypes.sizeof(Variant)
        buffer = bytearray(max(1, len(series)) * step)
        if not set(map(type, series)) <= {bool, type(None)}:
            raise TypeError("a series of truth values holds True, False and None")
        with memoryview(buffer) as view:
            halves = view.cast("H")
            if series:
                halves[0 :: step // 2] = array("H", [VT_EMPTY if e is None else VT_BOOL for e in series])
                halves[4 :: step // 2] = array("H", [0xFFFF if e else 0 for e in series])
            halves.release()
        block = (ctypes.c_char * len(buffer)).from_buffer(buffer)
        self._kept.append(block)
        self._set_array(variant, VT_VARIANT, step, len(series), ctypes.addressof(block))


def taken(variant: Variant) -> Any:
    """A plain value, and what it owned is free. Dates are day counts."""
    try:
        kind = variant.vt
        if kind in (VT_EMPTY, VT_NULL):
            return None
        if kind == VT_I2:
            return variant.iVal
        if kind == VT_I4:
            return variant.lVal
        if kind == VT_UI1:
            return variant.bVal
        if kind == VT_R4:
            return variant.fltVal
        if kind in (VT_R8, VT_DATE):
            return variant.dblVal
        if kind == VT_BOOL:
            return variant.boolVal != 0
        if kind == VT_BSTR:
            return text_at(variant.pointer)
        raise ValueError(f"a plain value was expected, not type {kind}")
    finally:
        variant.clear()


