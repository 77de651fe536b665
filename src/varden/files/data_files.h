#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/platform.h"
#include "varden/record.h"

/// What the engineers' files have in common. Their lines end with CR LF. A comma-separated field stands in
/// double quotes; quotes inside it are not doubled. Text is UTF-8.
namespace hy_wristlog {

class Procedure;

/// A text file that is written while it is composed and takes its place when it is saved. So a former file is
/// replaced by a whole one or not at all. When a report fails half-way, the lines so far are kept if no
/// former file stood there.
class DataFile {
 public:
  /// Folders in `path` are separated by "\" or "/".
  explicit DataFile(std::string_view path);

  /// Adds a field to the line, in quotes.
  DataFile& field(std::string_view value);
  /// Adds a field that `append` writes at the end of the text that it gets; nothing when that raises.
  template <class Append>
  requires std::invocable<const Append&, std::string&> DataFile& field(const Append& append) {
    const std::size_t before = text_.size();
    beginField();
    try {
      append(text_);
    } catch (...) {
      text_.resize(before);
      throw;
    }
    text_ += '"';
    return *this;
  }
  /// Adds text as it stands to the line.
  DataFile& plain(std::string_view text);
  /// Raises what `save` raises.
  void endLine();
  /// Writes a line of fields, an empty line when there are none.
  template <class... Values>
  void line(const Values&... values) {
    (field(values), ...);
    endLine();
  }

  /// Raises FileNotFound, DiskFull, PermissionDenied, PathFileAccess or PathNotFound when the system refuses.
  /// A former file is then unharmed.
  void save();
  /// To be called on every way out. When `save` was not reached and no former file stands there, it writes
  /// what was composed.
  void leave();

 private:
  void beginField();
  platform::NewFile& file();
  void finish();

  std::string path_;
  std::string text_;  ///< not yet handed to the file
  std::unique_ptr<platform::NewFile> file_;
  bool inLine_ = false;
  bool settled_ = false;
};

/// The index of the last recorded byte: BytesUsed - 1, or the last byte that there is when BytesUsed is 0 or
/// greater. The record must hold raw data.
std::int64_t lastRawIndex(const VardenRecord& record);

/// The body of the procedure `name`, which writes a file that `compose` fills. Without raw data, which a
/// message box tells, nothing is written.
void saveDataFile(const VardenRecord& record, const char* name, std::string_view path,
                  const std::function<void(Procedure&, DataFile&)>& compose);

/// Shows a message box with the button OK. Without a title it bears the library's name.
void tell(std::string_view text, std::string_view title = {});

/// Four bytes of a recording, little-endian. Raises Subscript when they are not all there.
std::int32_t loggerSecondsAt(const ByteArray& raw, std::int64_t position);

/// The first line of a Pendrel's raw data file, which has the same form.
inline constexpr std::string_view PendrelDumpHeading = "QV/HY Pendrel Logger Raw Data Output File";

/// Writes a raw data file's line "Address" and, up to the index `last`, its bytes, one a line.
void addRawBytes(DataFile& file, const ByteArray& raw, std::int64_t last);

/// Whether the text begins as a raw data file does.
bool isRawDump(std::string_view content);

/// The most bytes that `subReadRawDataFromFile` takes.
inline constexpr std::size_t MostDumpedBytes = 300000;

enum class Addresses : std::uint8_t { Ignored, Checked };

/// The bytes of a raw data file. They begin after its line "Address", one a line: what follows the line's
/// first comma, without quotes. Empty lines are passed over. Lines end with LF, CR LF or CR. Raises
/// TypeMismatch for a line without a number and for a file without the line "Address", Overflow for a number
/// that is no byte, Subscript for more than `mostBytes` bytes. When addresses are checked, raises
/// TypeMismatch too for a line whose decimal address (16 in "00010 (16)") is not the index of its byte; a
/// line without an address is accepted. The description names the line.
ByteArray readRawDump(std::string_view content, std::size_t mostBytes = MostDumpedBytes,
                      Addresses addresses = Addresses::Ignored);

/// Light test and activity are read up to so many bytes before the last one.
inline constexpr std::int64_t UnreadTail = 8;

/// A light test's start record has one byte less than an event record: the time follows the bits at once. A
/// reading has two bytes.
inline constexpr std::int64_t LightTestSamplesFrom = 6;
inline constexpr std::size_t ShortestLightTest = LightTestSamplesFrom + UnreadTail + 1;

}  // namespace hy_wristlog
