#include <algorithm>
#include <iostream>
#include <string>
#include <utility>

namespace wristlog {
namespace {

std::ostream& output = std::cout;
std::ostream& errors = std::cerr;

}  // namespace
}  // namespace wristlog

#include "words/safe_text.h"
#include "words/say.h"

namespace wristlog {

const Speech& Speech::operator<<(std::string_view foreign) const { return put(safeLine(foreign)); }

const Speech& Speech::lines(std::string_view foreign, std::string_view margin) const {
  while (!foreign.empty()) {
    const auto end = std::min(foreign.find_first_of("\r\n"), foreign.size());
    *this << foreign.substr(0, end);
    foreign.remove_prefix(foreign.substr(end).starts_with("\r\n") ? end + 2
                                                                  : std::min(end + 1, foreign.size()));
    if (!foreign.empty()) put("\n").put(margin);
  }
  return put("\n");
}

const Speech& Speech::traffic(std::string_view foreign) const { return put(safeText(foreign)); }

void Speech::flush() const { out_->flush(); }

const Speech& Speech::put(std::string_view text) const {
  out_->write(text.data(), static_cast<std::streamsize>(text.size()));
  return *this;
}

const Speech& Speech::putNumber(long long number) const { return put(std::to_string(number)); }

namespace {

thread_local std::ostream* caught = nullptr;

}  // namespace

Speech say() { return Speech(caught != nullptr ? *caught : output); }
Speech complain() { return Speech(caught != nullptr ? *caught : errors); }

SpeechCaught::SpeechCaught(std::ostream& into) : former_(std::exchange(caught, &into)) {}
SpeechCaught::~SpeechCaught() { caught = former_; }

void printDocument(std::string_view document) { output << document << '\n' << std::flush; }

void printText(std::string_view text) {
  output.write(text.data(), static_cast<std::streamsize>(text.size()));
}

bool flushStandardOutput() {
  output.flush();
  return output.good();
}

}  // namespace wristlog
