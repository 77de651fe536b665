"""Properties of the library's objects, typed and documented, read and written through the component."""

import operator
from array import array
from datetime import datetime, time
from enum import IntEnum
from typing import Any, Callable, Generic, List, Optional, Type, TypeVar, Union, overload

from . import dates
from ._component import Dispatch
from ._values import VT_DATE, Variant, numbers, octets, taken, texts, truths

T = TypeVar("T")


class Property(Generic[T]):
    """One property. `give` turns the component's answer into a Python value, `take` a Python value into one for the
    component; without `take` the property can only be read."""

    def __init__(
        self, doc: str, give: Callable[[Variant], T], take: Optional[Callable[[Any], Any]] = None
    ) -> None:
        self.__doc__ = doc
        self._give = give
        self._take = take
        self.name = ""

    @property
    def writable(self) -> bool:
        return self._take is not None

    def __set_name__(self, owner: type, name: str) -> None:
        self.name = name

    @overload
    def __get__(self, instance: None, owner: type) -> "Property[T]": ...
    @overload
    def __get__(self, instance: Any, owner: type) -> T: ...
    def __get__(self, instance: Any, owner: type) -> Union["Property[T]", T]:
        if instance is None:
            return self
        return self._give(self._read(instance._dispatch))

    def _read(self, dispatch: Dispatch) -> Variant:
        return dispatch.get(self.name)

    def __set__(self, instance: Any, value: T) -> None:
        if self._take is None:
            raise AttributeError(f"{self.name} can only be read")
        try:
            given = self._take(value)
        except TypeError as why:
            raise TypeError(f"{self.name}: {why}") from None
        except (ValueError, OverflowError) as why:
            raise ValueError(f"{self.name}: {why}") from None
        instance._dispatch.put(self.name, given)


def whole_number(value: Any) -> int:
    if isinstance(value, bool):
        raise TypeError("a whole number is needed, not a truth value")
    try:
        return operator.index(value)
    except TypeError:
        raise TypeError(f"a whole number is needed, not {type(value).__name__}") from None


def real_number(value: Any) -> float:
    if isinstance(value, bool) or not hasattr(value, "__float__"):
        raise TypeError(f"a number is needed, not {type(value).__name__}")
    try:
        return float(value)
    except OverflowError:
        raise ValueError("the number is too great") from None


def text(value: Any) -> str:
    if not isinstance(value, str):
        raise TypeError(f"a text is needed, not {type(value).__name__}")
    return value


def truth(value: Any) -> bool:
    if not isinstance(value, bool):
        raise TypeError(f"True or False is needed, not {type(value).__name__}")
    return value


def row_of(rows: Type[IntEnum], value: Any) -> int:
    """Raises ValueError for a number that the enumeration does not have."""
    return int(rows(whole_number(value)))


def date_variant(day_count: float) -> Variant:
    variant = Variant()
    variant.vt, variant.dblVal = VT_DATE, day_count
    return variant


def moment(value: Any, aware: bool) -> datetime:
    if not isinstance(value, datetime):
        raise TypeError(f"a datetime is needed, not {type(value).__name__}")
    if (value.utcoffset() is not None) != aware:
        raise ValueError(
            "a datetime with a time zone is needed"
            if aware
            else "local time is needed: a datetime without a time zone"
        )
    return value


def Text(doc: str, writable: bool = False) -> "Property[str]":
    return Property(doc, taken, text if writable else None)


def Whole(doc: str, writable: bool = False) -> "Property[int]":
    return Property(doc, taken, whole_number if writable else None)


def Real(doc: str, writable: bool = False) -> "Property[float]":
    return Property(doc, taken, real_number if writable else None)


def Truth(doc: str, writable: bool = False) -> "Property[bool]":
    return Property(doc, taken, truth if writable else None)


Row = TypeVar("Row", bound=IntEnum)


class Enumeration(Property[Row]):
    """A number that the enumeration does not have is given as an int."""

    def __init__(self, doc: str, rows: Type[Row], writable: bool = False) -> None:
        def give(variant: Variant) -> Any:
            value = taken(variant)
            try:
                return rows(value)
            except ValueError:
                return value

        super().__init__(doc, give, (lambda value: row_of(rows, value)) if writable else None)
        self.rows = rows


def Moment(
    doc: str, utc: bool, writable: bool = False, unknown: float = 0.0
) -> "Property[Optional[datetime]]":
    """None stands for no date, and is written as `unknown`."""

    def take(value: Any) -> Variant:
        if value is None:
            return date_variant(unknown)
        given = moment(value, utc)
        return date_variant(dates.to_utc_date(given) if utc else dates.to_date(given))

    return Property(doc, lambda variant: dates.from_date(taken(variant), utc), take if writable else None)


def TimeOfDay(doc: str) -> "Property[Optional[time]]":
    def take(value: Any) -> Variant:
        if value is None:
            return date_variant(dates.UNKNOWN)
        if not isinstance(value, time):
            raise TypeError(f"a time is needed, not {type(value).__name__}")
        return date_variant(dates.to_time_of_day(value))

    return Property(doc, lambda variant: dates.from_time_of_day(taken(variant)), take)


class Series(Property[T]):
    """`read` makes the value out of the component's answer, which is then cleared."""

    def __init__(self, doc: str, read: Callable[[Variant], T], take: Optional[Callable[[Any], Any]]) -> None:
        def give(variant: Variant) -> T:
            try:
                return read(variant)
            finally:
                variant.clear()

        super().__init__(doc, give, take)

    def _read(self, dispatch: Dispatch) -> Variant:
        return dispatch.get_series(self.name)


def Numbers(doc: str, code: str, writable: bool = False) -> "Property[array[Any]]":
    def take(value: Any) -> "array[Any]":
        if not isinstance(value, array) or value.typecode != code:
            raise TypeError(f'an array of type "{code}" is needed')
        return value

    return Series(doc, lambda variant: numbers(variant, code), take if writable else None)


def Truths(doc: str, writable: bool = False) -> "Property[List[Optional[bool]]]":
    def take(value: Any) -> List[Optional[bool]]:
        if not isinstance(value, list):
            raise TypeError(f"a list is needed, not {type(value).__name__}")
        return value

    return Series(doc, truths, take if writable else None)


def Octets(doc: str) -> "Property[bytes]":
    return Series(doc, octets, None)


def Texts(doc: str) -> "Property[List[str]]":
    return Property(doc, texts)


def Moments(doc: str) -> "Property[List[Optional[datetime]]]":
    def give(variant: Variant) -> List[Optional[datetime]]:
        return [dates.from_date(day_count, True) for day_count in numbers(variant, "d")]

    return Series(doc, give, None)
