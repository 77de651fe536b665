"""The library's objects: Main, and the loggers and subjects that it works with."""

import math
from datetime import datetime
from typing import Any, NamedTuple, Optional, Union

from . import _component, dates
from ._component import reference_to
from ._objects import EventSource, Object, Workflows
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
    row_of,
    text,
    truth,
    whole_number,
)
from ._values import VT_BOOL, VT_BSTR, VT_DISPATCH, VT_I4, VT_R4, Variant, taken, text_at
from .enums import (
    enmDataAvailable,
    enmDateFormat,
    enmDecodeResult,
    enmDeviceType,
    enmLoggerPointer,
    enmLowPowerShutdown,
    enmMemoryFull,
    enmPDLoggingMode,
    enmRetrieveStep,
    enmTimeFormat,
    enmVardenLoggingMode,
)

LoggerSeconds = Union[int, datetime, None]
"""A local time: logger seconds since 1970-01-01, or a datetime without a time zone. 0 and None: not given."""


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
    ) -> "DecodeResult":
        """Makes this object the logger that a saved config block describes, and decodes its saved bytes, of which the
        beginning will do.

        `FirmwareVersion`, like 01.01.0007, must be given for a block of version 1, which has none. `Diagnostic` goes
        on after some damage. With the moment of the retrieval, which is aware, in `SeenAt` the result is that of
        Retrieve; None stands for now, when a recording of long ago is Decode_TooLongSinceLastAcqStop. Raises
        HyWristlogError 5 (InvalidCall) while the logger's port is open; 11503
        (OutOfRange) without bytes; 11504 and 11505 (UnknownStructure, DamagedConfig) for a block that cannot be read;
        and 7, 9, 11, 11502 or 11503 for bytes that cannot be decoded with it.
        """
        low = _Variable(VT_BOOL)
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
        return DecodeResult(enmDecodeResult(taken(verdict)), low.variant.boolVal != 0)


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


class ConfigureResult(NamedTuple):
    """`battery_life_remaining` (days) and `device_serial_number` are None unless the logger was configured."""

    code: int
    battery_life_remaining: Optional[float]
    device_serial_number: Optional[str]


class StatusResult(NamedTuple):
    """`battery_life_remaining` (days) is None unless the type of the logger is known."""

    code: int
    simple_status: str
    long_status: str
    logger: Optional[VardenLogger]
    subject: Optional[Subject]
    battery_life_remaining: Optional[float]


class DecodeResult(NamedTuple):
    decode_result: enmDecodeResult
    low_battery_detected: bool


class RetrieveResult(NamedTuple):
    """`decode_result` is None when nothing was decoded."""

    code: int
    logger: Optional[VardenLogger]
    subject: Optional[Subject]
    decode_result: Optional[enmDecodeResult]
    low_battery_detected: bool


def _logger_seconds(value: LoggerSeconds) -> int:
    if value is None:
        return 0
    if isinstance(value, datetime):
        if value.utcoffset() is not None:
            raise ValueError("local time is needed: a datetime without a time zone")
        return dates.to_logger_seconds(value)
    return whole_number(value)


class _Variable:
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


def _new_subject() -> Subject:
    return Subject()


class Main(Workflows):
    """Works with one docked logger at a time: configures it, asks for its state, retrieves its recording.

    The workflows run to their end on the calling thread and answer with a code: 0, or one that `docs/contract.md`
    lists; they do not raise for it. Callbacks can be set before a workflow: `on_progress`, `on_error`, `on_abort`,
    `on_wait`, `on_download`; each may call `AbortComms`. `on_progress` tells the steps of writing to a logger,
    `on_download` the progress of a retrieval. Ctrl-C in the main thread asks for an abort if Python's own handler
    is in place; KeyboardInterrupt is then raised after the workflow.
    """

    _class_id = _component.CLSID_MAIN
    _events = (_component.DIID_VARDEN_LOGGER_EVENTS, _component.DIID_HOST_EVENTS)

    MaxCommunicationRetries = Whole("How many attempts Configure and Retrieve may make.", writable=True)
    Version = Text("Of the library: \"major.minor.revision\".")
    LegacyClearMemoryOnConfigure = Truth("Of the Pendrel family's workflows.", writable=True)
    LegacyCOMport = Whole("COM port of the Pendrel reader; 0 unknown.")
    WakeOnInput = Truth("Whether waits end with the byte that they wait for; True in this package.", writable=True)

    def __init__(self) -> None:
        super().__init__()
        self.WakeOnInput = True

    def Configure(
        self,
        LoggerType: enmLoggerPointer,
        AcquisitionMode: enmVardenLoggingMode,
        EpochLength: int,
        Subject: Subject,
        TimeZoneAbbrev: str = "",
        AutoDSTadjust: bool = False,
        LoggerLocalSetTime: LoggerSeconds = None,
        DataCollectionLocalStartTime: LoggerSeconds = None,
        DataCollectionLocalEndTime: LoggerSeconds = None,
        DateFormat: enmDateFormat = enmDateFormat.DateFormat_Unknown,
        TimeFormat: enmTimeFormat = enmTimeFormat.TimeFormat_Unknown,
    ) -> ConfigureResult:
        """Prepares the docked logger for a recording.

        `EpochLength` is 15, 30, 60, 120 or 300 seconds. `TimeZoneAbbrev` is one of the zone catalogue's; empty
        takes the machine's zone. Both formats must be given. A start without an end is refused with 10023
        (WrongEnd) for epochs of up to 120 seconds.
        """
        battery, serial = _Variable(VT_R4, math.nan), _Variable(VT_BSTR)
        code = self._run(
            "Configure",
            whole_number(LoggerType),
            whole_number(AcquisitionMode),
            whole_number(EpochLength),
            Subject._dispatch if isinstance(Subject, Object) else Subject,
            text(TimeZoneAbbrev),
            truth(AutoDSTadjust),
            _logger_seconds(LoggerLocalSetTime),
            _logger_seconds(DataCollectionLocalStartTime),
            _logger_seconds(DataCollectionLocalEndTime),
            row_of(enmDateFormat, DateFormat),
            row_of(enmTimeFormat, TimeFormat),
            battery.argument,
            serial.argument,
        )
        days = battery.variant.fltVal
        if math.isnan(days):
            return ConfigureResult(code, None, None)
        return ConfigureResult(code, days, text_at(serial.variant.pointer))

    def GetStatus(self, LoggerType: enmLoggerPointer) -> StatusResult:
        """Says in one short and one long text what state the docked logger is in."""
        simple, words = _Variable(VT_BSTR), _Variable(VT_BSTR)
        logger, subject = _Variable(VT_DISPATCH), _Variable(VT_DISPATCH)
        battery = _Variable(VT_R4, math.nan)
        variables = (simple, words, logger, subject, battery)
        code = self._run("GetStatus", whole_number(LoggerType), *(one.argument for one in variables))
        days = battery.variant.fltVal
        return StatusResult(
            code,
            text_at(simple.variant.pointer),
            text_at(words.variant.pointer),
            VardenLogger._of(logger.take_address()),
            Subject._of(subject.take_address()),
            None if math.isnan(days) else days,
        )

    def Retrieve(
        self,
        LoggerType: enmLoggerPointer,
        Subject: Optional[Subject] = None,
        *,
        IgnoreWarnings: bool = False,
        ReconfigureAfterRetrieve: bool = False,
        AppendData: bool = False,
    ) -> RetrieveResult:
        """Stops the docked logger, reads its whole memory and decodes it.

        `Subject` gets the logger's subject; without one a new one is made. Unless `IgnoreWarnings` a warning
        ends it before the recording is read. `ReconfigureAfterRetrieve` and `AppendData` change nothing.
        """
        own = Subject if Subject is not None else _new_subject()
        if not isinstance(own, Object):
            raise TypeError(f"Subject: a Subject is needed, not {type(own).__name__}")
        logger, subject = _Variable(VT_DISPATCH), _Variable(VT_DISPATCH, own)
        verdict, battery = _Variable(VT_I4, -1), _Variable(VT_BOOL)
        code = self._run(
            "Retrieve",
            whole_number(LoggerType),
            logger.argument,
            subject.argument,
            verdict.argument,
            battery.argument,
            None,
            truth(IgnoreWarnings),
            truth(ReconfigureAfterRetrieve),
            truth(AppendData),
        )
        found: Optional[int] = verdict.variant.lVal
        return RetrieveResult(
            code,
            VardenLogger._of(logger.take_address()),
            own,
            None if found == -1 else enmDecodeResult(found),
            battery.variant.boolVal != 0,
        )

    def AbortComms(self) -> None:
        """Asks the running workflow to stop; for callbacks. Between workflows it does nothing. Retrieve ends
        with 10013 (Aborted); Configure ends with 0 all the same, its result without a serial number, or with
        the failure of what the abort broke off. GetStatus ends with 10013 too."""
        self._dispatch.call("AbortComms").clear()

    def LoggerSecondsToDate(self, LoggerSeconds1970: int) -> Optional[datetime]:
        """The date of logger seconds, on the same clock: naive."""
        answer = self._dispatch.call("LoggerSecondsToDate", whole_number(LoggerSeconds1970))
        return dates.from_date(taken(answer), utc=False)

    def DateToLoggerSeconds(self, TheDate: datetime) -> int:
        """Seconds since 1970-01-01 of what the clock of `TheDate` shows; 0 for what they cannot hold."""
        if not isinstance(TheDate, datetime):
            raise TypeError(f"TheDate: a datetime is needed, not {type(TheDate).__name__}")
        seconds: int = taken(self._dispatch.call("DateToLoggerSeconds", date_variant(dates.to_date(TheDate))))
        return seconds

    def _run(self, name: str, *values: Any) -> int:
        with self._working():
            code: int = taken(self._dispatch.call(name, *values))
        return code

    def _ask_for_abort(self) -> None:
        if self._held is not None:
            self._held.call("AbortComms").clear()
