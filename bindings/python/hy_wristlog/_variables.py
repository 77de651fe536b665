"""Variables that calls of the library set."""

from typing import Any, Optional

from . import _component
from ._component import reference_to
from ._values import VT_DISPATCH, VT_I4, VT_R4, Variant


class OutVariable:
    """A variable that a workflow sets, of the type that it has."""

    def __init__(self, kind: int, value: Any = None) -> None:
        self.variant = Variant()
        self.kind = self.variant.vt = kind
        if kind == VT_R4:
            self.variant.fltVal = value
        elif kind == VT_I4:
            self.variant.lVal = value
        elif kind == VT_DISPATCH and value is not None:
            # With a reference of the variable's own.
            self.variant.pointer = value._dispatch.query(_component.IID_DISPATCH)

    @property
    def argument(self) -> Variant:
        return reference_to(self.variant, self.kind)

    def take_address(self) -> Optional[int]:
        """Of an object, with its reference."""
        address: Optional[int] = self.variant.pointer
        self.variant.pointer = None
        return address

    def __del__(self) -> None:
        self.variant.clear()
