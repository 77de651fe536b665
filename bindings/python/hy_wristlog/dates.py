"""Between the library's dates, day counts from 30 December 1899, and Python's."""

import math
from datetime import datetime, time, timedelta, timezone
from typing import Optional

_DAY_ZERO = datetime(1899, 12, 30)
_EPOCH = datetime(1970, 1, 1)
_SECONDS_PER_DAY = 86400
UNKNOWN = -1.0


def from_date(value: float, utc: bool) -> Optional[datetime]:
    """The date to its nearest second: aware when `utc`, otherwise naive. None for 0 and -1, which stand for
    no date.

    Raises ValueError for a day count that no datetime can hold.
    """
    if value in (0.0, UNKNOWN):
        return None
    if not math.isfinite(value):
        raise ValueError(f"{value} is no date")
    # Before day zero the time of day still counts forward: -1.25 is 29 December 1899, 06:00.
    days = math.trunc(value)
    seconds = round(abs(value - days) * _SECONDS_PER_DAY)
    try:
        moment = _DAY_ZERO + timedelta(days=days, seconds=seconds)
    except OverflowError:
        raise ValueError(f"{value} lies outside the years 1 to 9999") from None
    return moment.replace(tzinfo=timezone.utc) if utc else moment


def to_date(moment: datetime) -> float:
    """The day count of what the clock of `moment` shows; fractions of a second are left out."""
    since = moment.replace(tzinfo=None, microsecond=0) - _DAY_ZERO
    fraction = since.seconds / _SECONDS_PER_DAY
    return since.days - fraction if since.days < 0 else since.days + fraction


def to_utc_date(moment: datetime) -> float:
    return to_date(moment.astimezone(timezone.utc))


def from_time_of_day(value: float) -> Optional[time]:
    """The part of a day as a time; None for -1."""
    if value == UNKNOWN:
        return None
    if not math.isfinite(value):
        raise ValueError(f"{value} is no time of day")
    seconds = round(math.modf(abs(value))[0] * _SECONDS_PER_DAY) % _SECONDS_PER_DAY
    return (_EPOCH + timedelta(seconds=seconds)).time()


def to_time_of_day(moment: time) -> float:
    return (moment.hour * 3600 + moment.minute * 60 + moment.second) / _SECONDS_PER_DAY


def to_logger_seconds(moment: datetime) -> int:
    """Seconds since 1970-01-01 of what the clock of `moment` shows."""
    return int((moment.replace(tzinfo=None, microsecond=0) - _EPOCH).total_seconds())
