"""Recordings as data frames. Needs NumPy and pandas, which the rest of the package does not."""

from array import array
from datetime import tzinfo
from typing import TYPE_CHECKING, Any, Dict, Union

if TYPE_CHECKING:
    from .recording import Recording

Zone = Union[str, tzinfo]

_ALWAYS = {"marker", "marker2"}
"""No marker in an epoch is False; other series may have no value there."""


def _pandas() -> Any:
    try:
        import pandas
    except ImportError as why:
        raise ImportError(f"Data frames need pandas (Debian: python3-pandas): {why}") from None
    return pandas


def _column(pandas: Any, name: str, series: "array[Any]", length: int) -> Any:
    import numpy

    kind = {"i": numpy.int32, "f": numpy.float32, "b": numpy.int8}[series.typecode]
    values = numpy.asarray(series) if series else numpy.full(length, -1, dtype=kind)
    if series.typecode == "f":
        return numpy.where(values >= 0, values, numpy.float32("nan"))
    if series.typecode == "i":
        return pandas.arrays.IntegerArray(values.copy(), values < 0)
    if name in _ALWAYS:
        return values == 1
    return pandas.arrays.BooleanArray(values == 1, values < 0)


def series_frame(recording: "Recording", tz: Zone) -> Any:
    pandas = _pandas()
    if recording.start is None:
        index = pandas.DatetimeIndex([], tz="UTC")
    else:
        step = pandas.Timedelta(seconds=recording.epoch_seconds)
        index = pandas.date_range(recording.start, periods=recording.samples, freq=step, tz="UTC")
    columns: Dict[str, Any] = {"logger": recording.serial_number, "participant": recording.participant}
    for name, series in recording.series.items():
        columns[name] = _column(pandas, name, series, len(index))
    return pandas.DataFrame(columns, index=index.tz_convert(tz).rename("time"))


def events_frame(recording: "Recording", tz: Zone) -> Any:
    pandas = _pandas()
    times = pandas.to_datetime([event.time for event in recording.events], utc=True)
    columns = {
        "logger": recording.serial_number,
        "participant": recording.participant,
        "time": times.tz_convert(tz),
        "event": [event.text for event in recording.events],
        "record": [event.record for event in recording.events],
    }
    return pandas.DataFrame(columns, index=range(len(recording.events)))
