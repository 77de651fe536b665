#include "recording/codebook.h"

#include <array>

#include "picture/markup.h"

namespace wristlog {

namespace {

using enum FieldType;
using enum Family;

constexpr double Low = -Unbounded, High = Unbounded;
constexpr double HighestCount = 32767, HighestByte = 255, HighestWord = 65535;
constexpr double HighestSteps = 253;

constexpr std::string_view NotRecorded =
    "the logger or its mode does not record it, or the epoch has no value";
constexpr std::string_view OtherMode = "another mode, or the epoch has no value";
constexpr std::string_view NoOffset = "samples that are no epochs, as in mode 9";

constexpr std::array SeriesFields{
    Field{"logger", Text, "Serial number of the logger"},
    Field{"participant", Text, "Identity of the subject, as it was configured", "the logger has none"},
    Field{"local_time", Local, "Begin of the epoch by the clocks where the logger was worn", NoOffset},
    Field{"utc", Utc, "Begin of the epoch", NoOffset},
    Field{"activity_counts", Integer,
          "How much the logger was moved in the epoch. Counts have no physical unit. A logger keeps them in "
          "one byte, on a scale whose steps grow with the value. They are scaled by its calibration: the "
          "stored counts times 128, divided by activity_calibration",
          NotRecorded, Every, "counts", 0, HighestCount},
    Field{"activity_raw", Integer, "Mode 9: the byte of a sample, of which there are 32 a second, not scaled",
          OtherMode, Every, "", 0, HighestByte},
    Field{"steps", Integer, "Steps in the epoch. Pendrel Steps only", NotRecorded, Every, "steps", 0,
          HighestSteps},
    Field{"light_lux", Number,
          "Illuminance in photopic lux. It is stored as a power of 2 in steps of 1/32, so neighbouring "
          "values differ by 2.2 %. The least value is 0.0078125",
          NotRecorded, Every, "lx", 0},
    Field{"red_uw_cm2", Number,
          "Irradiance of red light, stored as a power of 2 in steps of 1/32, so neighbouring values differ "
          "by 2.2 %. Vivid only",
          NotRecorded, Every, "uW/cm2", 0},
    Field{"green_uw_cm2", Number, "The same of green light", NotRecorded, Every, "uW/cm2", 0},
    Field{"blue_uw_cm2", Number, "The same of blue light", NotRecorded, Every, "uW/cm2", 0},
    Field{"off_wrist_frequency", Number,
          "Vivid's mode 7: frequency that the off-wrist sensor reports. Its unit is not known", OtherMode,
          Every, "", 0, HighestWord},
    Field{"red_current", Number,
          "Vivid's mode 8: raw current of the sensor for red light. Its unit is not known", OtherMode, Every,
          "", 0},
    Field{"green_current", Number, "The same for green light", OtherMode, Every, "", 0},
    Field{"blue_current", Number, "The same for blue light", OtherMode, Every, "", 0},
    Field{"marker", Flag, "1: a marker was set in the epoch, of a Vivid by button 1",
          "no marker in the epoch"},
    Field{"marker2", Flag, "1: a marker was set in the epoch by button 2. Vivid only",
          "no marker in the epoch"},
    Field{"off_wrist", Flag,
          "1: off the wrist, 0: on it. The epoch in which the logger comes back counts as off. Vivid only",
          NotRecorded},
};
static_assert(SeriesFields.size() == static_cast<std::size_t>(SeriesColumn::OffWrist) + 1);

constexpr std::string_view NoTime = "the logger did not tell the time";

constexpr std::array EventFields{
    Field{"logger", Text, "Serial number of the logger"},
    Field{"participant", Text, "Identity of the subject, as it was configured", "the logger has none"},
    Field{"local_time", Local, "Time of the event by the clocks where the logger was worn", NoTime},
    Field{"utc", Utc, "Time of the event", NoTime},
    Field{"kind", Text,
          "What happened. docked, undocked, off_wrist and on_wrist tell a state, which need not be new"},
    Field{"event", Text, "The event in the decoder's words"},
    Field{"record", Text, "The logger's bytes that tell it, in hexadecimal"},
};

constexpr std::string_view Unread = "not known";

constexpr std::array RecordingFields{
    Field{"model", Text, "Model of the logger", "", Pendrel},
    Field{"subject.identity", Text, "Who wears the logger", Unread},
    Field{"subject.initials", Text, "Initials", Unread},
    Field{"subject.gender", Text, "One letter", Unread},
    Field{"subject.dob", UtcAndCount, "Date of birth", Unread},
    Field{"subject.guid", Text, "Identifier, 32 characters", Unread},
    Field{"subject.height", Number, "In the unit of whoever configured it", "0 or -1: not known"},
    Field{"subject.weight", Number, "In the unit of whoever configured it", "0 or -1: not known"},
    Field{"subject.age", Text, "Age at the retrieval, in digits", Unread, Every, "years"},
    Field{"time_zone", Text, "The logger's zone in words; of a Pendrel its three letters", Unread},
    Field{"time_zone_iana", Text, "The zone of the tz database whose rule local_time follows",
          "no zone gives local_time: the logger's zone is not known, or it keeps standard time all year"},
    Field{"start_local", Clock, "Begin of the first epoch", Unread, Pendrel},
    Field{"start_utc", Utc, "Begin of the first epoch", Unread},
    Field{"epoch_seconds", Integer, "Length of an epoch", "", Every, "s", 0, HighestCount},
    Field{"samples", Integer, "Rows of series.csv", "", Every, "", 0},
    Field{"markers", Integer, "Markers of both buttons", "", Every, "", 0},
    Field{"battery", Text, "The battery at the retrieval, in words", Unread, Varden},
    Field{"low_battery_detected", Boolean, "The battery was low during the recording", "", Varden},
    Field{"result", Text, "Verdict of the decoder by its name", "", Varden},
    Field{"result_in_words", Text, "The verdict in words", "", Varden},
    Field{"unchecked", Boolean, "True: the bytes are not those of the configuration. Else absent"},
    Field{"part", Boolean, "True: only the beginning of the recording came. Else absent"},
    Field{"bytes_received", Integer, "Of a part: the bytes that came", "", Every, "B", 0},
    Field{"bytes_in_logger", Integer, "Of a part: the bytes of the whole recording", "", Every, "B", 0},
    Field{"part_until_utc", Utc, "Of a part: the end of its last epoch", "nothing can be decoded"},
    Field{"made_by", Text, "The command whose simulated logger it is from. Else absent", "", Varden},
    Field{"configuration.acquisition_mode", Integer, "Logging mode; 7 to 9 are internal ones", "", Every, "",
          0, 9},
    Field{"configuration.subject_height", Number, "As subject.height", "0 or -1: not known"},
    Field{"configuration.subject_weight", Number, "As subject.weight", "0 or -1: not known"},
    Field{"configuration.device_type", Integer, "25 Kestrin Vivid, 26 Kestrin 2", "", Varden},
    Field{"configuration.epoch_length", Integer, "Length of an epoch", "-1: not known", Every, "s", Low,
          HighestCount},
    Field{"configuration.start_time_gmt", UtcAndCount, "Begin of the first epoch", Unread, Varden},
    Field{"configuration.end_time_gmt", UtcAndCount, "Configured end", Unread, Varden},
    Field{"configuration.start_time", TimeOfDay, "Start, local clock", Unread, Pendrel},
    Field{"configuration.start_date", Day, "Start, local clock", Unread, Pendrel},
    Field{"configuration.gmt_offset", Integer, "Local time minus UTC at the start", "-32768: not known",
          Every, "min"},
    Field{"configuration.battery_date", UtcAndCount, "Battery installed or charged", Unread, Varden},
    Field{"configuration.battery_date", Day, "Battery installed", Unread, Pendrel},
    Field{"configuration.serial_number", Text, "Serial number"},
    Field{"configuration.lcd_firmware_version", Text, "Firmware of the display", "no display", Varden},
    Field{"configuration.firmware_version", Text, "Firmware", Unread, Varden},
    Field{"configuration.firmware_version", Integer, "Firmware", "", Pendrel, "", 0, HighestByte},
    Field{"configuration.bytes_used", Integer, "Bytes recorded", "-1: not known", Every, "B"},
    Field{"configuration.activity_calibration", Integer,
          "Divisor of the activity counts; 128 leaves them as they are", "", Every, "", 0, HighestByte},
    Field{"configuration.samples", Integer, "Decoded epochs", "", Every, "", 0},
    Field{"configuration.light_scale_calibration", Integer, "Factor of the light sensor", "", Varden},
    Field{"configuration.red_light_calibration", Integer, "Factor of red light", "", Varden},
    Field{"configuration.blue_light_calibration", Integer, "Factor of blue light", "", Varden},
    Field{"configuration.green_light_calibration", Integer, "Factor of green light", "", Varden},
    Field{"configuration.marker_count", Integer, "Markers, of a Vivid those of button 1", "", Every, "", 0},
    Field{"configuration.marker2_count", Integer, "Markers of button 2", "", Varden, "", 0},
    Field{"configuration.subject_identity", Text, "As subject.identity", Unread},
    Field{"configuration.subject_initials", Text, "As subject.initials", Unread},
    Field{"configuration.subject_gender", Text, "As subject.gender", Unread},
    Field{"configuration.subject_guid", Text, "As subject.guid", Unread},
    Field{"configuration.subject_dob", UtcAndCount, "As subject.dob", Unread, Varden},
    Field{"configuration.subject_dob", Day, "As subject.dob", Unread, Pendrel},
    Field{"configuration.encoded_setup", Text, "The subject as the logger keeps it", Unread, Varden},
    Field{"configuration.tz_standard_abbrev", Text, "Letters of the logger's zone", Unread, Varden},
    Field{"configuration.tz_daylight_abbrev", Text, "Letters of its daylight time", Unread, Varden},
    Field{"configuration.time_zone_abbrev", Text, "Letters of the logger's zone", Unread, Pendrel},
    Field{"configuration.auto_dst_adjust", Boolean, "Local time follows daylight time"},
    Field{"configuration.battery_voltage", Number, "Battery", "-1: not read", Varden, "V"},
    Field{"configuration.loaded_batt_voltage", Number, "Battery under load", "-1: not read", Varden, "V"},
    Field{"configuration.batt_life_remaining", Number, "Days left at the retrieval", Unread, Every, "d", 0},
    Field{"configuration.battery_percent", Integer, "The same in percent", Unread, Varden, "%"},
    Field{"configuration.time_format", Integer, "Of the display: 1 off, 2 12 hours, 3 24 hours",
          "0: not known", Varden, "", 0, 3},
    Field{"configuration.date_format", Integer, "Of the display: 1 month first, 2 day first", "0: not known",
          Varden, "", 0, 2},
    Field{"configuration.low_power_shutdown_flag", Integer, "Shut down on a low battery: 1 yes, 2 no",
          "0: not known", Varden, "", 0, 2},
    Field{"configuration.low_power_shutdowns", Integer, "How often it was", "", Varden, "", 0, 15},
    Field{"configuration.off_wrist_off_threshold", Integer, "Off-wrist sensor, threshold", "", Varden},
    Field{"configuration.off_wrist_on_threshold", Integer, "Off-wrist sensor, threshold", "", Varden},
    Field{"configuration.model", Integer, "1 Kestrin 2, 2 Kestrin Vivid", "", Varden, "", 0, HighestByte},
    Field{"configuration.resets", Integer, "Resets of the logger", "-1: not known"},
    Field{"configuration.acq_threshold", Integer, "Acquisition threshold", "", Varden, "", 0, HighestByte},
    Field{"configuration.data_available", Integer, "Data not yet retrieved: 0 no, 1 yes", "2: not known",
          Varden, "", 0, 2},
    Field{"configuration.decode_result", Integer, "Verdict of the decoder by its number", "", Varden, "", 0,
          17},
    Field{"configuration.last_logger_time", UtcAndCount, "The logger's clock when it was read", Unread,
          Varden},
    Field{"configuration.last_time_logger_read", UtcAndCount, "The computer's clock then", Unread, Varden},
    Field{"configuration.current_gmt_time", UtcAndCount, "The logger's clock at the retrieval", Unread,
          Varden},
    Field{"configuration.score_min", Integer, "Least score", "", Varden, "", 0, HighestByte},
    Field{"configuration.score_max", Integer, "Highest score", "", Varden, "", 0, HighestByte},
    Field{"configuration.memory_full", Integer, "The memory is full: 0 no, 1 yes", "2: not known", Varden, "",
          0, 2},
    Field{"configuration.raw_data_is_part", Boolean, "Only the beginning came", "", Varden},
    Field{"configuration.bytes_in_logger", Integer, "Bytes that the logger held", "", Varden, "B", 0},
};

}  // namespace

std::span<const Field> seriesFields() { return SeriesFields; }
std::span<const Field> eventFields() { return EventFields; }
std::span<const Field> recordingFields() { return RecordingFields; }

std::string headingOf(std::span<const Field> fields) {
  std::string heading;
  for (const Field& field : fields) heading.append(heading.empty() ? "" : ",").append(field.Name);
  return heading + "\n";
}

std::string rangeOf(const Field& field) {
  if (field.Least == Low) return field.Most == High ? "" : "to " + picture::number(field.Most);
  const std::string least = picture::number(field.Least);
  return field.Most == High ? least + " or more" : least + " to " + picture::number(field.Most);
}

}  // namespace wristlog
