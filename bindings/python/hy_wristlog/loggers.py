"""The loggers that the library works with, and who wears them."""

from array import array
from datetime import datetime
from typing import Any, NamedTuple, Optional

from . import _component, dates
from ._objects import EventSource, Object
from ._properties import (
    Enumeration,
    Moment,
    Moments,
    Numbers,
    Octets,
    Real,
    Text,
    Texts,
    TimeOfDay,
    Truth,
    Truths,
    Whole,
    date_variant,
    moment,
    text,
    truth,
)
from ._values import VT_BOOL, numbers, taken
from ._variables import OutVariable
from .enums import (
    enmDataAvailable,
    enmDateFormat,
    enmDecodeResult,
    enmDeviceType,
    enmLowPowerShutdown,
    enmMemoryFull,
    enmPDLoggingMode,
    enmRetrieveStep,
    enmTimeFormat,
    enmVardenLoggingMode,
)


class Subject(Object):
    """The person who wears a logger."""

    _class_id = _component.CLSID_SUBJECT

    Initials = Text("Up to three characters.", writable=True)
    Age = Text("Whole years from the date of birth to now; \"0\" without one.")
    DOB = Moment("Date of birth, local; None for none.", utc=False, writable=True)
    Gender = Text("One capital letter, or empty; keeps the first character of what it is given.", writable=True)
    GUID = Text("32 hexadecimal digits.", writable=True)
    Identity = Text("Up to 64 characters.", writable=True)
    Height = Real("Kept in tenths.", writable=True)
    Weight = Real("Kept in tenths.", writable=True)


class DecodeResult(NamedTuple):
    decode_result: enmDecodeResult
    low_battery_detected: bool


_Decoded = DecodeResult
"""The class, where a property has its name."""


class VardenLogger(EventSource):
    """Everything that is known about one Kestrin Vivid or Kestrin 2. Moments are in UTC, and aware; None where
    there is none.

    The series have one element an epoch from `StartTimeGMT` on, and are empty when there is no recording or
    when the mode does not record them. In the numbers -1 stands for an epoch without a value; where nothing
    was stored, activity is EMPTY_NUMBER and light NaN. Each read makes the series anew: keep it.
    """

    _class_id = _component.CLSID_VARDEN_LOGGER
    _events = (_component.DIID_VARDEN_LOGGER_EVENTS,)

    AcquisitionMode = Enumeration("What it records.", enmVardenLoggingMode, writable=True)
    SubjectHeight = Real("The subject's.", writable=True)
    SubjectWeight = Real("The subject's.", writable=True)
    DeviceType = Enumeration("KR_QUILLANDER, KR_TOLKA, or Device_Unknown.", enmDeviceType, writable=True)
    EpochLength = Whole("Seconds an epoch.", writable=True)
    StartTimeGMT = Moment("The start of the recording.", utc=True, writable=True)
    EndTimeGMT = Moment("The end that was asked for.", utc=True, writable=True)
    GMToffset = Whole("Of the logger's zone at the start, in minutes.", writable=True)
    BatteryDate = Moment("When the battery was put in or charged.", utc=True, writable=True)
    SerialNumber = Text("The logger's.")
    LCDfirmwareVersion = Text("A Vivid's display firmware; empty without a display.")
    FirmwareVersion = Text("Major, minor and build, like 01.01.0007.")
    BytesUsed = Whole("Recorded bytes.")
    ActivityCalibration = Whole("Divisor of the activity scale.")
    Samples = Whole("Decoded epochs.")
    LightScaleCalibration = Whole("Factor of the light.")
    RedLightCalibration = Whole("Factor of the red light.")
    BlueLightCalibration = Whole("Factor of the blue light.")
    GreenLightCalibration = Whole("Factor of the green light.")
    MarkerCount = Whole("How often button 1 was pressed.")
    SubjectIdentity = Text("The subject's.", writable=True)
    SubjectGender = Text("The subject's.", writable=True)
    SubjectGUID = Text("The subject's.", writable=True)
    SubjectDOB = Moment("The subject's date of birth, local.", utc=False, writable=True)
    SubjectInitials = Text("The subject's.", writable=True)
    EncodedSetup = Text("The subject as the logger stores it.", writable=True)
    TZstandardAbbrev = Text("Abbreviation of the logger's zone.", writable=True)
    TZdaylightAbbrev = Text("The same in daylight time.", writable=True)
    AutoDSTadjust = Truth("Whether the logger follows daylight time.", writable=True)
    BatteryVoltage = Real("Volts; -1 until read.")
    LoadedBattVoltage = Real("Volts under load; -1 until read.")
    TimeFormat = Enumeration("Of the logger's display.", enmTimeFormat, writable=True)
    DateFormat = Enumeration("Of the logger's display.", enmDateFormat, writable=True)
    LowPowerShutdownFlag = Enumeration("Whether it went out for want of power.", enmLowPowerShutdown)
    OffWristOffThreshold = Whole("As the logger stores it.")
    OffWristOnThreshold = Whole("As the logger stores it.")
    Model = Whole("1 for a Kestrin 2, 2 for a Kestrin Vivid.")
    Resets = Whole("0 to 15.")
    LowPowerShutdowns = Whole("0 to 15.")
    AcqThreshold = Whole("As the logger stores it.")
    DataAvailable = Enumeration("Whether it holds a recording.", enmDataAvailable, writable=True)
    DecodeResult = Enumeration("The last verdict of decoding.", enmDecodeResult)
    LastLoggerTime = Moment("The logger's clock when it was last read.", utc=True)
    LastTimeLoggerRead = Moment("When that was.", utc=True)
    ScoreMin = Whole("As the logger stores it.", writable=True)
    ScoreMax = Whole("As the logger stores it.", writable=True)
    MemoryFull = Enumeration("Whether its memory is full.", enmMemoryFull)
    ActivityArray = Numbers("Activity counts: array of type \"i\".", "i")
    MarkerArray = Truths("True where button 1 was pressed, None elsewhere.")
    LightArray = Numbers("Lux: array of type \"f\".", "f")
    WristStatusArray = Truths("True while the logger was off the wrist; None where nothing was stored.")
    RedLightArray = Numbers("Microwatts per square centimetre: array of type \"f\".", "f")
    GreenLightArray = Numbers("Microwatts per square centimetre: array of type \"f\".", "f")
    BlueLightArray = Numbers("Microwatts per square centimetre: array of type \"f\".", "f")
    BattLifeRemaining = Real("Days. Raises HyWristlogError 11502 (WrongDeviceType) for an unknown device type.")
    BatteryPercent = Whole(
        "Of a Kestrin Vivid. For others HyWristlogError 11502 (WrongDeviceType) is raised; within ten seconds "
        "of a failure it reads 0."
    )
    CurrentGMTtime = Moment("The logger's clock now, worked out from its last reading.", utc=True)
    Marker2Array = Truths("True where button 2 of a Kestrin Vivid was pressed, None elsewhere.")
    Marker2Count = Whole("How often button 2 was pressed.")
    EventTimes = Moments("When each decoded event happened; None where its record does not tell.")
    EventTexts = Texts("What happened.")
    EventRecords = Texts("The bytes of each event, in hexadecimal.")
    ConfigBlock = Octets("The config block that belongs to `RawData`, or that was read last.")
    RawData = Octets(
        "The bytes of the recording that the last retrieval has read: all, or the longest part that came."
    )
    RawDataIsPart = Truth("Whether `RawData` are only the beginning of what the logger held.")
    BytesInLogger = Whole("How many bytes the logger held.")
    RetrieveStep = Enumeration("How far the retrieval has come.", enmRetrieveStep)

    def series(self, name: str, code: str) -> "array[Any]":
        """A series as an array: type "i" or "f" for numbers, "b" for truth values, where -1 stands for None."""
        answer = self._dispatch.get_series(name)
        try:
            return numbers(answer, code)
        finally:
            answer.clear()

    def subVardenConfigCRCreset(self) -> None:
        """Makes the docked logger compute its configuration's checksum anew. Its port must be open.

        Raises HyWristlogError 3001 to 3003 (NoCharacters, NoFinalCharacter, WrongCharacters) and 11507
        (DamagedAnswer).
        """
        with self._working():
            self._dispatch.call("subVardenConfigCRCreset").clear()

    def DecodeRecording(
        self,
        ConfigBlock: bytes,
        RawData: bytes,
        FirmwareVersion: str = "",
        *,
        Diagnostic: bool = False,
        SeenAt: Optional[datetime] = None,
    ) -> _Decoded:
        """Makes this object the logger that a saved config block describes, and decodes its saved bytes, of which the
        beginning will do.

        `FirmwareVersion`, like 01.01.0007, must be given for a block of version 1, which has none. `Diagnostic` goes
        on after some damage. With the moment of the retrieval, which is aware, in `SeenAt` the result is that of
        Retrieve; None stands for now, when a recording of long ago is Decode_TooLongSinceLastAcqStop. Raises
        HyWristlogError 5 (InvalidCall) while the logger's port is open; 11503
        (OutOfRange) without bytes; 11504 and 11505 (UnknownStructure, DamagedConfig) for a block that cannot be read;
        and 7, 9, 11, 11502 or 11503 for bytes that cannot be decoded with it.
        """
        low = OutVariable(VT_BOOL)
        with self._working():
            verdict = self._dispatch.call(
                "DecodeRecording",
                bytes(memoryview(ConfigBlock)),
                bytes(memoryview(RawData)),
                text(FirmwareVersion),
                low.argument,
                truth(Diagnostic),
                date_variant(dates.UNKNOWN if SeenAt is None else dates.to_utc_date(moment(SeenAt, True))),
            )
        return _Decoded(enmDecodeResult(taken(verdict)), low.variant.boolVal != 0)


class Pendrel(Object):
    """Everything that is known about one logger of the older Pendrel family. Moments are in the logger's local
    time, and naive; None where there is none. Series as those of VardenLogger; nothing stored: EMPTY_NUMBER. The
    workflows refuse this family: such an object is a record that a host may fill."""

    _class_id = _component.CLSID_PENDREL

    SubjectHeight = Real("The subject's; -1 unknown.", writable=True)
    SubjectWeight = Real("The subject's; -1 unknown.", writable=True)
    AcquisitionMode = Enumeration("What it records.", enmPDLoggingMode, writable=True)
    EpochLength = Whole("Seconds an epoch; -1 unknown.", writable=True)
    StartTime = TimeOfDay("Time of day at which the recording starts; None unknown.")
    StartDate = Moment("Day on which it starts.", utc=False, writable=True, unknown=dates.UNKNOWN)
    BatteryDate = Moment("When the battery was changed.", utc=False, writable=True, unknown=dates.UNKNOWN)
    SerialNumber = Text("Seven characters.", writable=True)
    FirmwareVersion = Whole("0 to 255.", writable=True)
    BytesUsed = Whole("Recorded bytes, without the header; -1 unknown.", writable=True)
    ActivityCalibration = Whole("Divisor of the activity scale.", writable=True)
    Samples = Whole("Decoded epochs.")
    Resets = Whole("-1 unknown.")
    BattLifeRemaining = Real("Days.")
    MarkerCount = Whole("Decoded markers.", writable=True)
    SubjectIdentity = Text("The subject's.", writable=True)
    SubjectGender = Text("The subject's.", writable=True)
    SubjectGUID = Text("The subject's: 32 hexadecimal digits.", writable=True)
    SubjectDOB = Moment("The subject's date of birth.", utc=False, writable=True, unknown=dates.UNKNOWN)
    TimeZoneAbbrev = Text("Abbreviation of the logger's zone.", writable=True)
    AutoDSTadjust = Truth("Whether daylight time is followed.", writable=True)
    GMToffset = Whole("Minutes to add to UTC; -32768 unknown.", writable=True)
    SubjectInitials = Text("The subject's.", writable=True)
    ActivityArray = Numbers("Activity counts: array of type \"i\".", "i", writable=True)
    MarkerArray = Truths("True at epochs with a marker, None elsewhere.", writable=True)
    StepsArray = Numbers("Steps: array of type \"i\". Empty for a model that counts none.", "i", writable=True)
