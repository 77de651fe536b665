#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/platform.h"
#include "varden/record.h"

/// What the engineers' files have in common. Their lines end with CR LF; a comma-separated field stands in
/// double quotes as it is, quotes in it are not doubled. Text is UTF-8.
namespace hy_wristlog {

/// A text file that is written while it is composed and takes its place when it is saved, so that what stood
/// there before is replaced by a whole file or not at all. A report that fails half-way leaves the lines it
/// came to, unless they would take a former file's place.
class DataFile {
 public:
  /// "\" and "/" both separate folders.
  explicit DataFile(std::string_view path);

  /// Adds a field to the line, in quotes.
  DataFile& field(std::string_view value);
  /// Adds text as it stands to the line.
  DataFile& plain(std::string_view text);
  /// Raises what `save` raises.
  void endLine();
  /// A line of fields; without any, an empty line.
  template <class... Values>
  void line(const Values&... values) {
    (field(values), ...);
    endLine();
  }

  /// Raises 53, 61, 70, 75 or 76 when the system refuses; a former file then stands unharmed.
  void save();
  /// To be called on every way out: keeps what was composed where `save` was not reached and no file stood.
  void leave();

 private:
  platform::NewFile& file();
  void finish();

  std::string path_;
  std::string text_;  ///< not yet handed to the file
  std::unique_ptr<platform::NewFile> file_;
  bool inLine_ = false;
  bool settled_ = false;
};

/// The index of the last recorded byte: BytesUsed - 1, or that of the last byte there is when BytesUsed is 0
/// or beyond it. The record holds raw data.
std::int64_t lastRawIndex(const VardenRecord& record);

/// Whether the record holds raw data; when it does not, a message box says "Insufficient data".
bool requireRawData(const VardenRecord& record);

/// A message box with the button OK; without a title it bears the library's name.
void tell(std::string_view text, std::string_view title = {});

/// Four bytes of a recording, little-endian. Fault 9 when they are not all there.
std::int32_t loggerSecondsAt(const ByteArray& raw, std::int64_t position);

/// Whether the text begins as a raw data file does.
bool isRawDump(std::string_view content);

/// As many bytes as `subReadRawDataFromFile` takes.
inline constexpr std::size_t MostDumpedBytes = 300000;

enum class Addresses : std::uint8_t { Ignored, Checked };

/// The bytes of a raw data file: behind its line "Address" one a line, behind the line's first comma, quotes
/// left out; lines that are empty hold none. Lines end with LF, CR LF or CR. Raises 13 for a line without a
/// number and a file without that line, 6 for a number that is no byte, 9 for more than `mostBytes` bytes.
/// When addresses are checked, 13 also for a line whose decimal address, "00010 (16)", is not the byte's
/// index; a line may have none. The description names the line.
ByteArray readRawDump(std::string_view content, std::size_t mostBytes = MostDumpedBytes,
                      Addresses addresses = Addresses::Ignored);

/// The light test and the activity end so far from the last byte.
inline constexpr std::int64_t UnreadTail = 8;

/// A light test's start record is a byte shorter than an event record: its time follows the bits at once. A
/// reading has two bytes.
inline constexpr std::int64_t LightTestSamplesFrom = 6;
inline constexpr std::size_t ShortestLightTest = LightTestSamplesFrom + UnreadTail + 1;

}  // namespace hy_wristlog
