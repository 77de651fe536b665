#include "varden/files/data_files.h"

#include "base/faults.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "platform/platform.h"
#include "tools/paths.h"

namespace hy_wristlog {

DataFile::DataFile(std::string_view path) : path_(nativePath(path)) {}

DataFile& DataFile::field(std::string_view value) {
  beginField();
  text_ += value;
  text_ += '"';
  return *this;
}

void DataFile::beginField() {
  if (inLine_) text_ += ',';
  inLine_ = true;
  text_ += '"';
}

DataFile& DataFile::plain(std::string_view text) {
  text_ += text;
  return *this;
}

platform::NewFile& DataFile::file() {
  if (!file_) file_ = platform::current().files().create(path_);
  return *file_;
}

void DataFile::endLine() {
  constexpr std::size_t Piece = 65536;
  text_ += "\r\n";
  inLine_ = false;
  if (text_.size() < Piece) return;
  settled_ = true;  // After a failure here nothing is kept.
  withFileFaults(path_, [&] { file().add(text_); });
  settled_ = false;
  text_.clear();
}

void DataFile::finish() {
  file().add(text_);
  file().finish();
}

void DataFile::save() {
  settled_ = true;
  withFileFaults(path_, [&] { finish(); });
}

void DataFile::leave() {
  if (settled_ || (text_.empty() && !file_)) return;
  withFileFaults(path_, [&] {
    if (platform::current().files().state(path_).Kind == platform::FileKind::Missing) finish();
  });
}

std::int64_t lastRawIndex(const VardenRecord& record) {
  const std::int64_t upperBound = static_cast<std::int64_t>(record.RawData->size()) - 1;
  return record.BytesUsed == 0 || record.BytesUsed > upperBound ? upperBound : record.BytesUsed - 1;
}

void saveDataFile(const VardenRecord& record, const char* name, std::string_view path,
                  const std::function<void(Procedure&, DataFile&)>& compose) {
  Procedure procedure{"Class_VardenLogger", name};
  procedure.passesOn(fault::PathFileAccess);
  DataFile file(path);
  procedure.cleanUp([&file] { file.leave(); });
  procedure.run([&] {
    if (!record.RawData) return tell("Insufficient data");
    compose(procedure, file);
    procedure.statement([&] { file.save(); });
  });
}

void tell(std::string_view text, std::string_view title) {
  platform::current().host().showMessageBox(title.empty() ? globals().AppName : title, text,
                                            static_cast<std::int32_t>(MessageBoxButton::Ok));
}

std::int32_t loggerSecondsAt(const ByteArray& raw, std::int64_t position) {
  std::uint32_t seconds = 0;
  for (std::int64_t i = 3; i >= 0; --i) seconds = seconds << 8 | fault::at(raw, position + i);
  return static_cast<std::int32_t>(seconds);
}

}  // namespace hy_wristlog
