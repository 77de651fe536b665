#pragma once

#include <cstdint>

namespace hy_wristlog {

/// The `LoggerType` argument of the workflows.
enum enmLoggerPointer : std::int32_t {
  LggrPntr_None = -1,
  LggrPntr_KRVivid = 0,
  LggrPntr_KRII = 1,
  LggrPntr_Pendreader = 2,
};

enum enmDeviceType : std::int32_t {
  Device_Unknown = 0,
  KR_2 = 1,
  KR_4 = 2,
  KR_16 = 3,
  KR_64 = 4,
  KR_L = 5,
  KR_LP = 6,
  KR_GRADE = 7,
  KR_TONE = 8,
  KR_HEAT = 9,
  KR_LOLD = 10,
  KR_WARN = 11,
  KR_NERV = 12,
  KR_PENDREL = 13,
  KR_PENDREL_CRC = 14,
  KR_GRADE2 = 15,
  KR_GRADE2_CRC = 16,
  KR_GRADE2E_CRC = 17,
  ZB_BASIC = 18,
  ZB_IBI = 19,
  KR_16_CRC = 20,
  KR_64_CRC = 21,
  REST_SPAN = 22,
  OAKMAN = 23,
  XRIB = 24,
  KR_QUILLANDER = 25,
  KR_TOLKA = 26,
  KR_PENDREL_CRC_STEPS = 27,
  KR_LP_CRC = 28,
};

enum enmVardenLoggingMode : std::int32_t {
  VardenMode_Unknown = 0,
  VardenMode_ActivityOnly = 1,
  VardenMode_StandardLightOnly = 2,
  VardenMode_ActivityAndStandardLight = 3,
  VardenMode_SpecialLightOnly = 4,
  VardenMode_ActivityAndSpecialLight = 5,
  VardenMode_Off = 6,
  VardenMode_InternalOffWristFrequency = 7,
  VardenMode_InternalLightCalibration = 8,
  VardenMode_InternalActivity32Hz = 9,
};

/// The mode of a Pendrel logger's recording.
enum enmPDLoggingMode : std::int32_t {
  PD_Mode_Unknown = 0,
  PD_Mode_ActivityOnly = 1,
  PD_Mode_ActivityAndSteps = 2,
};

enum enmTimeFormat : std::int32_t {
  TimeFormat_Unknown = 0,
  TimeFormat_DisplayOff = 1,
  TimeFormat_12hourAMPM = 2,
  TimeFormat_24hour = 3,
};

enum enmDateFormat : std::int32_t {
  DateFormat_Unknown = 0,
  DateFormat_MMDD = 1,
  DateFormat_DDMM = 2,
};

enum enmButtonMap : std::int32_t {
  ButtonMap_Unknown = 0,
  ButtonMap_Marker1Only = 1,
  ButtonMap_Marker2Only = 2,
  ButtonMap_BacklightOnly = 3,
  ButtonMap_DateTimeOnly = 4,
  ButtonMap_Marker1AndBacklight = 5,
  ButtonMap_Marker2AndBacklight = 6,
  ButtonMap_BacklightAndDateTime = 7,
  ButtonMap_Marker1AndDateTime = 8,
  ButtonMap_Marker2AndDateTime = 9,
  ButtonMap_Marker1BacklightDateTime = 10,
  ButtonMap_Marker2BacklightDateTime = 11,
};

enum enmDataAvailable : std::int32_t {
  DataAvail_No = 0,
  DataAvail_Yes = 1,
  DataAvail_Unknown = 2,
};

enum enmMemoryFull : std::int32_t {
  MemFull_No = 0,
  MemFull_Yes = 1,
  MemFull_Unknown = 2,
};

enum enmLowPowerShutdown : std::int32_t {
  LowPower_Unknown = 0,
  LowPower_ShutdownOccurred = 1,
  LowPower_ShutdownNotOccurred = 2,
};

/// The verdict of decoding a recording. What was decoded before the problem is kept, except after
/// `Decode_InputError`.
enum enmDecodeResult : std::int32_t {
  Decode_OK = 0,
  Decode_ResetPOSTfailed = 1,
  Decode_ResetPOSTpassed = 2,
  Decode_Shutdown = 3,
  Decode_MemoryFull = 4,
  Decode_StartBeforeLastStop = 5,
  Decode_AcqStopTimeBeforePriorData = 6,
  Decode_MarkerEventOutsideAcquisition = 7,
  Decode_InputError = 8,
  Decode_NonEventDataOutsideAcquisition = 9,
  Decode_EventDecodingError = 10,
  Decode_OverflowOccurred = 11,
  Decode_AcqStartBeforeConfigStart = 12,
  Decode_Physio_Decode_Error = 13,
  Decode_Special65Kdefect = 14,
  Decode_BigDiffBetweenAcqTimes = 15,
  Decode_TooLongSinceLastAcqStop = 16,
  Decode_POSTcausedEventError = 17,
};

/// How far the attempts of a retrieval have come.
enum enmRetrieveStep : std::int32_t {
  RetrieveStep_None = 0,         ///< the logger was not reached
  RetrieveStep_Reached = 1,      ///< its set-up was read; it records as before
  RetrieveStep_Stopping = 2,     ///< it was told to stop recording, and has not confirmed it
  RetrieveStep_Stopped = 3,      ///< it records no more
  RetrieveStep_Downloading = 4,  ///< the download of the recording was begun
  RetrieveStep_Downloaded = 5,   ///< all bytes of the recording came
  RetrieveStep_Decoded = 6,      ///< and were decoded; stop time and data flag were still to be written
  RetrieveStep_Done = 7,
};

/// An element of a marker or wrist array. `Empty`: nothing was stored.
enum class Tristate : std::int8_t { Empty = -1, False = 0, True = 1 };

}  // namespace hy_wristlog
