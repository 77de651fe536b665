#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "base/ascii.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "platform/platform.h"
#include "tools/paths.h"
#include "varden/VardenLogger.h"
#include "varden/files/data_files.h"

namespace hy_wristlog {
namespace {

constexpr std::string_view Heading = "QV/HY Varden Logger Raw Data Output File";
constexpr std::string_view AddressLabel = "Address";
/// The most characters of a wrong value that a failure's description shows.
constexpr std::size_t Excerpt = 40;

void appendAddress(std::string& text, std::int64_t index) {
  constexpr char HexadecimalDigits[] = "0123456789ABCDEF";
  // From 1 MiB on an address has more digits.
  constexpr int LeastDigits = 5;
  int digits = LeastDigits;
  while (index >> 4 * digits != 0) ++digits;
  while (digits-- > 0) text += HexadecimalDigits[index >> 4 * digits & 15];
  text += " (";
  appendDigits(text, index);
  text += ')';
}

std::string_view takeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end);
  text.remove_prefix(text.starts_with("\r\n") ? 2 : std::min<std::size_t>(text.size(), 1));
  return line;
}

std::string withoutQuotes(std::string_view line) {
  std::string text(line);
  std::erase(text, '"');
  return text;
}

std::string inLine(std::size_t number) { return " in line " + std::to_string(number); }

/// A missing or moved line would shift or swap bytes, and nobody would notice.
void checkAddress(std::string_view line, std::size_t index, std::size_t number) {
  const std::string_view address = line.substr(0, line.find(','));
  const std::size_t from = address.find('('), to = address.find(')');
  if (line.find(',') == line.npos || from == address.npos || to == address.npos || to < from) return;
  const std::string_view digits = address.substr(from + 1, to - from - 1);
  if (digits != std::to_string(index))
    fault::raise(fault::TypeMismatch, "address " + std::string(digits.substr(0, Excerpt)) + " stands" +
                                          inLine(number) + " where " + std::to_string(index) +
                                          " belongs: lines are missing or not in their order");
}

std::uint8_t byteOfLine(std::string_view line, std::size_t number) {
  const std::size_t comma = line.find(',');
  const std::string field = withoutQuotes(line.substr(comma == line.npos ? 0 : comma + 1));
  const std::string_view digits = trimBlanks(field);
  if (!isDigits(digits))
    fault::raise(fault::TypeMismatch, "\"" + field.substr(0, Excerpt) + "\" is no byte" + inLine(number));
  const double value = leadingNumber(digits.substr(0, Excerpt));
  if (value > 255)
    fault::raise(fault::Overflow, "\"" + field.substr(0, Excerpt) + "\" is no byte" + inLine(number));
  return static_cast<std::uint8_t>(value);
}

std::string readFile(const std::string& path) {
  return withFileFaults(path, [&] { return platform::current().files().read(path); });
}

}  // namespace

void addRawBytes(DataFile& file, const ByteArray& raw, std::int64_t last) {
  file.line(AddressLabel, "Raw Data Value");
  file.line();
  const NumberFormat format("##0");
  std::array<std::string, 256> texts;
  for (std::size_t byte = 0; byte < texts.size(); ++byte) texts[byte] = format(static_cast<double>(byte));
  for (std::int64_t index = 0; index <= last; ++index) {
    file.field([index](std::string& text) { appendAddress(text, index); });
    file.line(texts[fault::at(raw, index)]);
  }
}

bool isRawDump(std::string_view content) {
  const std::string_view first = takeLine(content);
  return first.find(Heading) != first.npos || first.find(PendrelDumpHeading) != first.npos;
}

ByteArray readRawDump(std::string_view content, std::size_t mostBytes, Addresses addresses) {
  bool inData = false;
  // The heading ends with the line that begins with "Address". A subject of that name stands in the middle of
  // its line.
  std::size_t number = 0;
  for (; !inData && !content.empty(); ++number)
    inData = withoutQuotes(takeLine(content)).starts_with(AddressLabel);
  if (!inData) fault::raise(fault::TypeMismatch, "the raw data file ends before its line \"Address\"");
  ByteArray bytes;
  while (!content.empty()) {
    const std::string_view line = takeLine(content);
    ++number;
    if (line.empty()) continue;
    if (bytes.size() == mostBytes)
      fault::raise(fault::Subscript,
                   "the raw data file holds more than " + std::to_string(mostBytes) + " bytes");
    if (addresses == Addresses::Checked) checkAddress(line, bytes.size(), number);
    bytes.push_back(byteOfLine(line, number));
  }
  return bytes;
}

void VardenLogger::subSaveRawDataToFile(std::string_view path) {
  saveDataFile(record, "subSaveRawDataToFile", path, [this](Procedure& procedure, DataFile& file) {
    procedure.statement([&] {
      file.line(Heading);
      file.line("Subject ID:", record.EncodedSetup);
      file.line("Start Time (GMT/UTC):", formatDate(record.StartTimeGMT, globals().LongDateTimeFormat));
      file.line("Serial Number:", record.SerialNumber);
      file.line("Epoch Length:", std::to_string(record.EpochLength));
      file.line("Model:", std::to_string(record.Model));
      file.line("Firmware Version:", record.FirmwareVersion);
      file.line("Acquisition Mode:", std::to_string(record.ConfigBlock.AcquisitionMode));
      file.line();
      addRawBytes(file, *record.RawData, lastRawIndex(record));
    });
  });
}

void VardenLogger::subReadRawDataFromFile(std::string_view path) {
  Procedure procedure{"Class_VardenLogger", "subReadRawDataFromFile"};
  procedure.passesOn(fault::PathFileAccess);
  procedure.run([&] {
    const std::string content = procedure.statement([&] { return readFile(nativePath(path)); });
    if (!isRawDump(content)) {
      tell("Incorrect file format. Please insure you have a raw data .csv file from Varden Terminal.",
           "Incorrect file format");
      return;
    }
    ByteArray bytes = procedure.statement([&] { return readRawDump(content); });
    record.BytesUsed = fault::narrow<std::int32_t>(bytes.size());
    record.RawData = std::move(bytes);
  });
}

}  // namespace hy_wristlog
