"""The workflows with a docked logger, and what they answer."""

import math
from datetime import datetime
from typing import Any, List, NamedTuple, Optional, Union

from . import _component, dates
from ._objects import Object, Workflows
from ._properties import Text, Texts, Truth, Whole, date_variant, row_of, text, truth, whole_number
from ._values import VT_BOOL, VT_BSTR, VT_DISPATCH, VT_I4, VT_R4, taken, text_at, texts
from ._variables import OutVariable
from .enums import enmDateFormat, enmDecodeResult, enmLoggerPointer, enmTimeFormat, enmVardenLoggingMode
from .loggers import Subject, VardenLogger

LoggerSeconds = Union[int, datetime, None]
"""A local time: logger seconds since 1970-01-01, or a datetime without a time zone. 0 and None: not given."""


class Code(int):
    """A return code of a workflow, or a failure number."""

    @property
    def name(self) -> str:
        """Its name, such as NotFound; empty when there is none of this number."""
        with Main() as main:
            return main.CodeName(self)

    @property
    def meaning(self) -> str:
        """What it means, and what to do about it."""
        with Main() as main:
            return main.CodeMeaning(self)


class ConfigureResult(NamedTuple):
    """`battery_life_remaining` (days) and `device_serial_number` are None unless the logger was configured."""

    code: Code
    battery_life_remaining: Optional[float]
    device_serial_number: Optional[str]


class StatusResult(NamedTuple):
    """`battery_life_remaining` (days) is None unless the type of the logger is known."""

    code: Code
    simple_status: str
    long_status: str
    logger: Optional[VardenLogger]
    subject: Optional[Subject]
    battery_life_remaining: Optional[float]


class RetrieveResult(NamedTuple):
    """`decode_result` is None when nothing was decoded."""

    code: Code
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
    DockNames = Texts("The names of all docks; `hy_wristlog.docks` tells more of them.")
    DockInUse = Text("The dock that the calling thread has chosen; empty when it has all.")

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
        battery, serial = OutVariable(VT_R4, math.nan), OutVariable(VT_BSTR)
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
        simple, words = OutVariable(VT_BSTR), OutVariable(VT_BSTR)
        logger, subject = OutVariable(VT_DISPATCH), OutVariable(VT_DISPATCH)
        battery = OutVariable(VT_R4, math.nan)
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
        logger, subject = OutVariable(VT_DISPATCH), OutVariable(VT_DISPATCH, own)
        verdict, battery = OutVariable(VT_I4, -1), OutVariable(VT_BOOL)
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
        found: int = verdict.variant.lVal
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

    def CodeName(self, Code: int) -> str:
        """The name of a return code or failure number, such as NotFound; empty when there is none of this number."""
        return self._told("CodeName", whole_number(Code))

    def CodeMeaning(self, Code: int, LoggerType: enmLoggerPointer = enmLoggerPointer.LggrPntr_None) -> str:
        """What a return code or failure number means, and what to do about it; with LggrPntr_Pendreader, of a Pendrel
        logger."""
        return self._told("CodeMeaning", whole_number(Code), whole_number(LoggerType))

    def ResultName(self, Result: enmDecodeResult) -> str:
        """Decode_OK for `enmDecodeResult.Decode_OK`."""
        return self._told("ResultName", whole_number(Result))

    def ResultMeaning(self, Result: enmDecodeResult) -> str:
        """What a decode result says of the recording."""
        return self._told("ResultMeaning", whole_number(Result))

    def NamesOfDock(self, Name: str) -> List[str]:
        """All names of a dock, its own one first; empty when no dock answers to `Name`."""
        return texts(self._dispatch.call("NamesOfDock", text(Name)))

    def ModelOfDock(self, Name: str) -> enmLoggerPointer:
        """The model whose dock it is; LggrPntr_None for no dock."""
        return enmLoggerPointer(taken(self._dispatch.call("ModelOfDock", text(Name))))

    def PortOfDock(self, Name: str) -> int:
        """Its COM port; 0 for none."""
        port: int = taken(self._dispatch.call("PortOfDock", text(Name)))
        return port

    def UseDock(self, Name: str) -> None:
        """Chooses the dock of the calling thread; an empty name gives it all docks again."""
        self._dispatch.call("UseDock", text(Name)).clear()

    def UseDevice(self, Device: str, LoggerType: enmLoggerPointer) -> None:
        """The same for a path or address, whether it is declared or not."""
        self._dispatch.call("UseDevice", text(Device), row_of(enmLoggerPointer, LoggerType)).clear()

    def _told(self, name: str, *values: Any) -> str:
        words: str = taken(self._dispatch.call(name, *values))
        return words

    def _run(self, name: str, *values: Any) -> Code:
        with self._working():
            return Code(taken(self._dispatch.call(name, *values)))

    def _ask_for_abort(self) -> None:
        if self._held is not None:
            self._held.call("AbortComms").clear()
