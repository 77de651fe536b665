"""What the tests share: a bench for each test, and the component's type information."""

import ctypes
import gc
import time
import unittest
from typing import Any, Callable, Dict, List, NamedTuple, Tuple

from hy_wristlog import _library
from hy_wristlog._component import Dispatch, Interface
from hy_wristlog._values import take_text
from hy_wristlog.simulator import Bench

Pointer = ctypes.c_void_p
Result = ctypes.c_uint32
VIVID, KESTRIN2 = 0, 1
EVERY_FORMAT = {"DateFormat": 1, "TimeFormat": 3}


def comes_true(condition: Callable[[], bool]) -> bool:
    """What happens at the end of a thread happens a moment after its join."""
    deadline = time.monotonic() + 30
    while not condition() and time.monotonic() < deadline:
        time.sleep(0.001)
    return condition()


def can_unload() -> bool:
    gc.collect()
    return bool(_library.component().DllCanUnloadNow() == 0)


class BenchCase(unittest.TestCase):
    """Each test has a bench; at its end no object of the library may be left."""

    MODEL = "vivid"

    def setUp(self) -> None:
        self.bench = Bench(self.MODEL)
        self.addCleanup(self._end)

    def _end(self) -> None:
        self.bench.close()
        self.assertTrue(comes_true(can_unload), "an object or a reference is left")


class TypeDesc(ctypes.Structure):
    pass


class _TypeDescContent(ctypes.Union):
    _fields_ = [("lptdesc", ctypes.POINTER(TypeDesc)), ("hreftype", ctypes.c_uint32)]


TypeDesc._anonymous_ = ["content"]
TypeDesc._fields_ = [("content", _TypeDescContent), ("vt", ctypes.c_uint16)]


class ParamDesc(ctypes.Structure):
    _fields_ = [("pparamdescex", Pointer), ("wParamFlags", ctypes.c_uint16)]


class ElemDesc(ctypes.Structure):
    _fields_ = [("tdesc", TypeDesc), ("paramdesc", ParamDesc)]


class FuncDesc(ctypes.Structure):
    _fields_ = [
        ("memid", ctypes.c_int32),
        ("lprgscode", Pointer),
        ("lprgelemdescParam", ctypes.POINTER(ElemDesc)),
        ("funckind", ctypes.c_int32),
        ("invkind", ctypes.c_int32),
        ("callconv", ctypes.c_int32),
        ("cParams", ctypes.c_int16),
        ("cParamsOpt", ctypes.c_int16),
        ("oVft", ctypes.c_int16),
        ("cScodes", ctypes.c_int16),
        ("elemdescFunc", ElemDesc),
        ("wFuncFlags", ctypes.c_uint16),
    ]


class Member(NamedTuple):
    kinds: int
    type: int
    """Of the value that it gives."""
    parameters: List[Tuple[str, int]]
    """Names, and flags: 1 in, 2 out, 16 optional."""


def _call(interface: Interface, slot: int, *arguments: Tuple[Any, Any]) -> int:
    prototype = ctypes.CFUNCTYPE(Result, Pointer, *(kind for kind, _ in arguments))
    result: int = interface.method(slot, prototype)(interface.address, *(value for _, value in arguments))
    return result


def members_of(dispatch: Dispatch) -> Dict[str, Member]:
    """The members of an object's dispatch interface, as its type information tells them."""
    found = Pointer()
    u32 = ctypes.c_uint32
    assert _call(dispatch, 4, (u32, 0), (u32, 0), (Pointer, ctypes.addressof(found))) == 0
    info = Interface(found.value or 0)
    members: Dict[str, Member] = {}
    index = 0
    while True:
        description = ctypes.POINTER(FuncDesc)()
        if _call(info, 5, (u32, index), (Pointer, ctypes.addressof(description))) != 0:
            break
        one = description[0]
        names, count = (Pointer * 20)(), ctypes.c_uint32()
        assert _call(info, 7, (ctypes.c_int32, one.memid), (Pointer, ctypes.addressof(names)), (u32, 20),
                     (Pointer, ctypes.addressof(count))) == 0  # fmt: skip
        texts = [take_text(names[i]) for i in range(count.value)]
        flags = [one.lprgelemdescParam[i].paramdesc.wParamFlags for i in range(one.cParams)]
        puts = one.invkind == 4
        former = members.get(texts[0])
        kind = one.elemdescFunc.tdesc.vt if not puts else one.lprgelemdescParam[0].tdesc.vt
        members[texts[0]] = Member(
            one.invkind | (former.kinds if former else 0), kind, [] if puts else list(zip(texts[1:], flags))
        )
        _call(info, 20, (Pointer, ctypes.cast(description, Pointer)))
        index += 1
    info.close()
    return members
