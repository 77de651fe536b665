"""The library's enumerations, under the names that it gives them."""

from enum import IntEnum

__all__ = [
    "enmDataAvailable",
    "enmDateFormat",
    "enmDecodeResult",
    "enmDeviceType",
    "enmLoggerPointer",
    "enmLowPowerShutdown",
    "enmMemoryFull",
    "enmPDLoggingMode",
    "enmRetrieveStep",
    "enmTimeFormat",
    "enmVardenLoggingMode",
]


class enmLoggerPointer(IntEnum):
    """The model that a workflow is for."""

    LggrPntr_None = -1
    LggrPntr_KRVivid = 0
    LggrPntr_KRII = 1
    LggrPntr_Pendreader = 2


class enmDeviceType(IntEnum):
    """What a logger says that it is. A Kestrin Vivid is KR_QUILLANDER, a Kestrin 2 KR_TOLKA."""

    Device_Unknown = 0
    KR_2 = 1
    KR_4 = 2
    KR_16 = 3
    KR_64 = 4
    KR_L = 5
    KR_LP = 6
    KR_GRADE = 7
    KR_TONE = 8
    KR_HEAT = 9
    KR_LOLD = 10
    KR_WARN = 11
    KR_NERV = 12
    KR_PENDREL = 13
    KR_PENDREL_CRC = 14
    KR_GRADE2 = 15
    KR_GRADE2_CRC = 16
    KR_GRADE2E_CRC = 17
    ZB_BASIC = 18
    ZB_IBI = 19
    KR_16_CRC = 20
    KR_64_CRC = 21
    REST_SPAN = 22
    OAKMAN = 23
    XRIB = 24
    KR_QUILLANDER = 25
    KR_TOLKA = 26
    KR_PENDREL_CRC_STEPS = 27
    KR_LP_CRC = 28


class enmVardenLoggingMode(IntEnum):
    """What a Kestrin Vivid or a Kestrin 2 records."""

    VardenMode_Unknown = 0
    VardenMode_ActivityOnly = 1
    VardenMode_StandardLightOnly = 2
    VardenMode_ActivityAndStandardLight = 3
    VardenMode_SpecialLightOnly = 4
    VardenMode_ActivityAndSpecialLight = 5
    VardenMode_Off = 6
    VardenMode_InternalOffWristFrequency = 7
    VardenMode_InternalLightCalibration = 8
    VardenMode_InternalActivity32Hz = 9


class enmPDLoggingMode(IntEnum):
    """What a Pendrel logger records."""

    PD_Mode_Unknown = 0
    PD_Mode_ActivityOnly = 1
    PD_Mode_ActivityAndSteps = 2


class enmTimeFormat(IntEnum):
    """How a logger's display shows the time."""

    TimeFormat_Unknown = 0
    TimeFormat_DisplayOff = 1
    TimeFormat_12hourAMPM = 2
    TimeFormat_24hour = 3


class enmDateFormat(IntEnum):
    """How a logger's display shows the date."""

    DateFormat_Unknown = 0
    DateFormat_MMDD = 1
    DateFormat_DDMM = 2


class enmDataAvailable(IntEnum):
    """Whether a logger holds a recording."""

    DataAvail_No = 0
    DataAvail_Yes = 1
    DataAvail_Unknown = 2


class enmMemoryFull(IntEnum):
    """Whether a logger's memory is full."""

    MemFull_No = 0
    MemFull_Yes = 1
    MemFull_Unknown = 2


class enmLowPowerShutdown(IntEnum):
    """Whether a logger went out for want of power."""

    LowPower_Unknown = 0
    LowPower_ShutdownOccurred = 1
    LowPower_ShutdownNotOccurred = 2


class enmDecodeResult(IntEnum):
    """The verdict of decoding a recording. Everything but Decode_InputError leaves what was decoded before
    the problem."""

    Decode_OK = 0
    Decode_ResetPOSTfailed = 1
    Decode_ResetPOSTpassed = 2
    Decode_Shutdown = 3
    Decode_MemoryFull = 4
    Decode_StartBeforeLastStop = 5
    Decode_AcqStopTimeBeforePriorData = 6
    Decode_MarkerEventOutsideAcquisition = 7
    Decode_InputError = 8
    Decode_NonEventDataOutsideAcquisition = 9
    Decode_EventDecodingError = 10
    Decode_OverflowOccurred = 11
    Decode_AcqStartBeforeConfigStart = 12
    Decode_Physio_Decode_Error = 13
    Decode_Special65Kdefect = 14
    Decode_BigDiffBetweenAcqTimes = 15
    Decode_TooLongSinceLastAcqStop = 16
    Decode_POSTcausedEventError = 17


class enmRetrieveStep(IntEnum):
    """How far the attempts of a retrieval have come. From RetrieveStep_Stopped on the logger records no more."""

    RetrieveStep_None = 0
    RetrieveStep_Reached = 1
    RetrieveStep_Stopping = 2
    RetrieveStep_Stopped = 3
    RetrieveStep_Downloading = 4
    RetrieveStep_Downloaded = 5
    RetrieveStep_Decoded = 6
    RetrieveStep_Done = 7
