"""A simulated logger configured, worn, asked for its state, and retrieved."""

import json
import math
from array import array
from datetime import date, datetime, timedelta
from typing import Any, Dict, List, Optional

from .enums import enmDateFormat, enmDecodeResult, enmLoggerPointer, enmTimeFormat, enmVardenLoggingMode
from .loggers import Subject, VardenLogger
from .main import Main, RetrieveResult
from .simulator import Bench

MODELS = {
    "vivid": ("Kestrin Vivid", enmLoggerPointer.LggrPntr_KRVivid),
    "kestrin2": ("Kestrin 2", enmLoggerPointer.LggrPntr_KRII),
}
_EPOCH = 60
_BLOCKS = " ▁▂▃▄▅▆▇█"
_COLUMNS_PER_DAY = 48


class DemoError(Exception):
    """A step ended with a code other than 0."""


def demo_subject() -> Subject:
    subject = Subject()
    subject.Identity = "Demo"
    subject.Initials = "DE"
    subject.Gender = "F"
    subject.DOB = datetime(1990, 6, 15)
    subject.Height = 170
    subject.Weight = 65.5
    return subject


def picture(logger: VardenLogger) -> List[str]:
    """A line a day, half an hour a column; the height of a block is the logarithm of the activity."""
    offset = timedelta(minutes=logger.GMToffset)
    start = logger.StartTimeGMT
    if start is None:
        return []
    epoch = timedelta(seconds=logger.EpochLength)
    days: Dict[date, List[List[int]]] = {}
    for number, counts in enumerate(logger.ActivityArray):
        if counts < 0:
            continue
        local = start + offset + number * epoch
        columns = days.setdefault(local.date(), [[] for _ in range(_COLUMNS_PER_DAY)])
        columns[(local.hour * 60 + local.minute) * _COLUMNS_PER_DAY // 1440].append(counts)
    means = {day: [sum(c) / len(c) if c else 0.0 for c in columns] for day, columns in days.items()}
    highest = math.log1p(max((mean for of_day in means.values() for mean in of_day), default=0)) or 1
    lines = ["            0h          6h          12h         18h"]
    for day, of_day in means.items():
        blocks = (_BLOCKS[round(math.log1p(mean) / highest * (len(_BLOCKS) - 1))] for mean in of_day)
        lines.append(f"{day}  {''.join(blocks)}".rstrip())
    return lines


def _numbers(series: "array[Any]") -> List[Optional[float]]:
    if series.typecode == "f":
        return [None if math.isnan(value) else round(value, 6) for value in series]
    return [None if value == -(2**31) else value for value in series]


def _document(result: RetrieveResult, logger: VardenLogger, statuses: List[str]) -> Dict[str, Any]:
    start = logger.StartTimeGMT
    return {
        "return_code": result.code,
        "decode_result": result.decode_result,
        "decode_result_name": result.decode_result.name if result.decode_result is not None else None,
        "serial_number": logger.SerialNumber,
        "statuses": statuses,
        "start_time_gmt": start.strftime("%Y-%m-%dT%H:%M:%SZ") if start else None,
        "epoch_length": logger.EpochLength,
        "samples": logger.Samples,
        "marker_count": logger.MarkerCount,
        "low_battery_detected": result.low_battery_detected,
        "activity": _numbers(logger.ActivityArray),
        "light": _numbers(logger.LightArray),
        "marker": logger.MarkerArray,
        "wrist": logger.WristStatusArray,
    }


class _Demo:
    def __init__(self, model: str, days: float, as_json: bool) -> None:
        self._name, self._pointer = MODELS[model]
        self._days = days
        self._as_json = as_json
        self._statuses: List[str] = []

    def _say(self, text: str) -> None:
        if not self._as_json:
            print(text)

    def run(self, bench: Bench, main: Main) -> None:
        self._say(f"A {self._name} sits in its dock. (Logger, dock and time are simulated.)")
        self._configure(main)
        self._status(main)
        bench.wear(timedelta(days=self._days))
        self._say(f"It was worn for {self._days:g} days.")
        self._status(main)
        self._retrieve(bench, main)

    def _require(self, step: str, code: int) -> None:
        if code != 0:
            raise DemoError(f"{step} ended with code {code}; docs/contract.md tells what that means")

    def _configure(self, main: Main) -> None:
        configured = main.Configure(
            self._pointer,
            enmVardenLoggingMode.VardenMode_ActivityAndStandardLight,
            _EPOCH,
            demo_subject(),
            AutoDSTadjust=True,
            DateFormat=enmDateFormat.DateFormat_MMDD,
            TimeFormat=enmTimeFormat.TimeFormat_24hour,
        )
        self._require("Configure", configured.code)
        self._say(
            f"Configured {configured.device_serial_number} for activity and light, a value a minute. "
            f"Battery: about {configured.battery_life_remaining:.0f} days."
        )

    def _status(self, main: Main) -> None:
        status = main.GetStatus(self._pointer)
        self._require("GetStatus", status.code)
        self._statuses.append(status.simple_status)
        self._say(f"Status: {status.simple_status}")

    def _retrieve(self, bench: Bench, main: Main) -> None:
        before = bench.elapsed
        result = main.Retrieve(self._pointer)
        self._require("Retrieve", result.code)
        logger = result.logger
        if logger is None:
            raise DemoError("Retrieve handed no logger out")
        if self._as_json:
            print(json.dumps(_document(result, logger, self._statuses)))
            return
        verdict = "The recording is sound." if result.decode_result == enmDecodeResult.Decode_OK else ""
        self._say(
            f"Retrieved {logger.BytesUsed} bytes in {bench.elapsed - before:.0f} simulated seconds: "
            f"{logger.Samples} epochs, {logger.MarkerCount} markers. {verdict}"
        )
        for line in picture(logger):
            print(line)


def run(model: str, days: float, as_json: bool) -> None:
    """Raises DemoError, and what the package raises."""
    with Bench(model) as bench, Main() as main:
        _Demo(model, days, as_json).run(bench, main)
