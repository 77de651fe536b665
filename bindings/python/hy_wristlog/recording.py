"""A decoded recording as plain data, for an analysis."""

import tempfile
from array import array
from dataclasses import dataclass
from datetime import datetime, timedelta
from os import PathLike
from pathlib import Path
from typing import Any, Dict, List, NamedTuple, Optional, Union

from . import _frames, _program, _saved
from ._frames import Zone
from ._saved import Saved
from .enums import enmDecodeResult, enmVardenLoggingMode
from .errors import RecordingError
from .loggers import VardenLogger
from .main import RetrieveResult

_MODELS = {1: "Kestrin 2", 2: "Kestrin Vivid"}
_SERIES = {
    "activity_counts": ("ActivityArray", "i"),
    "light_lux": ("LightArray", "f"),
    "red_uw_cm2": ("RedLightArray", "f"),
    "green_uw_cm2": ("GreenLightArray", "f"),
    "blue_uw_cm2": ("BlueLightArray", "f"),
    "marker": ("MarkerArray", "b"),
    "marker2": ("Marker2Array", "b"),
    "off_wrist": ("WristStatusArray", "b"),
}
_Mode = enmVardenLoggingMode
_INTERNAL_NAMES = {
    _Mode.VardenMode_InternalOffWristFrequency: {"red_uw_cm2": "off_wrist_frequency"},
    _Mode.VardenMode_InternalLightCalibration: {f"{c}_uw_cm2": f"{c}_current" for c in ("red", "green", "blue")},
    _Mode.VardenMode_InternalActivity32Hz: {"activity_counts": "activity_raw"},
}
"""What the series of internal modes are called in the place of their usual names."""


class Event(NamedTuple):
    """`time` is aware, in UTC, or None where the logger does not tell it; `record` is its bytes in hexadecimal."""

    time: Optional[datetime]
    text: str
    record: str


@dataclass(frozen=True, repr=False, eq=False)
class Recording:
    """What a Kestrin Vivid or a Kestrin 2 has recorded: from a folder (`Recording.open`) or from a retrieval
    (`Recording.of`). It is plain data that belongs to no thread and can be pickled.

    Series have one element an epoch from `start` on, and are empty when the logger or its mode does not record
    them. They are arrays, whose memory `numpy.asarray` takes as it is. Below 0 is an epoch without a value; light
    may be NaN there. Markers and off-wrist are 1, 0, or -1 where nothing was stored.
    """

    serial_number: str
    model: str
    """Kestrin Vivid or Kestrin 2."""
    participant: str
    """The subject's identity, as it was configured."""
    mode: enmVardenLoggingMode
    start: Optional[datetime]
    """The beginning of the first epoch: aware, in UTC. None when there is none."""
    epoch_seconds: int
    samples: int
    """How many epochs."""
    utc_offset: timedelta
    """Local time minus UTC at the start."""
    zone: Optional[str]
    """The tz database's name of the logger's zone, when the folder's recording.json tells it."""
    retrieved: Optional[datetime]
    """The moment of the retrieval, when it is known; aware, in UTC."""
    verdict: enmDecodeResult
    low_battery: bool
    is_part: bool
    """Whether it is only the beginning of what the logger held."""
    unchecked: bool
    """Whether the bytes differ from those that the configuration tells of."""
    bytes_in_logger: int
    series: Dict[str, "array[Any]"]
    """By the names of the columns of series.csv."""
    events: List[Event]
    saved: Saved
    """The text of config.ini and the bytes of the recording."""

    @classmethod
    def open(
        cls, folder: "Union[str, PathLike[str]]", *, unchecked: bool = False, diagnostic: bool = False
    ) -> "Recording":
        """The recording that `wristlog retrieve` or `save` has written, or a part of one. `diagnostic` goes on after
        some damage, and with recordings of internal modes.

        Raises RecordingError for a folder without a recording, and for bytes that its configuration does not tell
        of, unless they are taken `unchecked`; HyWristlogError for bytes that cannot be decoded; OSError.
        """
        path = Path(folder)
        return cls._decoded(_saved.in_folder(path), unchecked, _saved.zone_in(path), str(path), diagnostic)

    @classmethod
    def of(cls, result: RetrieveResult) -> "Recording":
        """What `Main.Retrieve` has brought: the recording, or the part that came before it broke off.

        Raises RecordingError when that is nothing, HyWristlogError for bytes that cannot be decoded.
        """
        if result.logger is None or not result.logger.RawData:
            raise RecordingError(f"Retrieve ended with code {result.code} before bytes of a recording came")
        saved = _saved.of_logger(result.logger, result.low_battery_detected)
        return cls._decoded(saved, False, None, "the retrieval")

    @classmethod
    def _decoded(
        cls, saved: Saved, unchecked: bool, zone: Optional[str], origin: str, diagnostic: bool = False
    ) -> "Recording":
        def require(mismatch: str) -> None:
            if mismatch and not unchecked:
                raise RecordingError(
                    f"{origin}: the bytes are not the recording that its configuration belongs to, or not all of "
                    f"it: {mismatch}. unchecked=True takes them as they are."
                )

        require(saved.mismatch())
        with VardenLogger() as logger:
            seen_at = saved.retrieved
            bytes_ = (saved.block, saved.raw, saved.firmware)
            decoded = logger.DecodeRecording(*bytes_, Diagnostic=diagnostic, SeenAt=seen_at)
            start = logger.StartTimeGMT
            if seen_at is None and start is not None:  # seen from its end
                seen_at = start + timedelta(seconds=logger.Samples * logger.EpochLength)
                decoded = logger.DecodeRecording(*bytes_, Diagnostic=diagnostic, SeenAt=seen_at)
            mismatch = saved.mismatch(logger.BytesInLogger)
            require(mismatch)
            names = _INTERNAL_NAMES.get(logger.AcquisitionMode, {})
            events = zip(logger.EventTimes, logger.EventTexts, logger.EventRecords)
            return cls(
                serial_number=logger.SerialNumber,
                model=_MODELS.get(logger.Model, ""),
                participant=logger.SubjectIdentity,
                mode=logger.AcquisitionMode,
                start=logger.StartTimeGMT,
                epoch_seconds=logger.EpochLength,
                samples=logger.Samples,
                utc_offset=timedelta(minutes=logger.GMToffset),
                zone=zone,
                retrieved=saved.retrieved,
                verdict=decoded.decode_result,
                low_battery=decoded.low_battery_detected or saved.low_battery,
                is_part=saved.is_part(logger.BytesInLogger),
                unchecked=bool(mismatch),
                bytes_in_logger=logger.BytesInLogger,
                series={
                    names.get(name, name): logger.series(member, code) for name, (member, code) in _SERIES.items()
                },
                events=[Event(*event) for event in events],
                saved=saved,
            )

    def __repr__(self) -> str:
        part = ", only a part" if self.is_part else ""
        since = f" from {self.start:%Y-%m-%dT%H:%M:%SZ}" if self.start else ""
        epochs = f"{self.samples} epochs of {self.epoch_seconds} s"
        return f"<{__package__}.Recording {self.serial_number}: {epochs}{since}{part}>"

    def to_dataframe(self, tz: Zone = "UTC") -> Any:
        """A pandas data frame with a row an epoch. The index is aware of `tz`, a zone's name or a tzinfo. Columns
        are `logger`, `participant` and the series: activity as Int32 and off-wrist as boolean, both with NA; light
        as float32 with NaN; markers as bool. Raises ImportError without pandas."""
        return _frames.series_frame(self, tz)

    def events_to_dataframe(self, tz: Zone = "UTC") -> Any:
        """A pandas data frame with a row an event: `logger`, `participant`, `time` (NaT where it is not told),
        `event`, `record`. Raises ImportError without pandas."""
        return _frames.events_frame(self, tz)

    def save(self, folder: "Union[str, PathLike[str]]") -> None:
        """Writes config.ini and the bytes, from which `open` and `wristlog decode` make everything else.

        Raises FileExistsError when the folder holds a recording, and OSError.
        """
        self.saved.write(Path(folder), self.is_part)

    def plot(self, folder: "Union[str, PathLike[str]]", *, force: bool = False) -> List[Path]:
        """Writes the program's pictures, actogram.svg and report.html, into the folder, and returns their paths.

        `force` lets them replace others. The program `wristlog` is the one that the environment variable
        HY_WRISTLOG_PROGRAM names, or that lies beside the library, or on the PATH. Raises ProgramNotFoundError;
        ProgramError for what the program refuses.
        """
        target = Path(folder).absolute()
        with tempfile.TemporaryDirectory() as work:
            self.save(work)
            options = ["--force"] * force + ["--unchecked"] * self.unchecked
            _program.run("plot", work, "--out", str(target), *options)
        return [target / "actogram.svg", target / "report.html"]
