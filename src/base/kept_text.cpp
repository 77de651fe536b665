#include "base/kept_text.h"

#include <cstdint>

namespace hy_wristlog {

void KeptText::append(std::string_view text) {
  text_ += text;
  if (text_.size() <= most_) return;
  if (leftOut_ == 0) head_ = characterAt(most_ / 4);
  // A quarter more than needed is cut, so that not every append moves all that is kept.
  const std::size_t tail = characterAt(text_.size() - most_ / 2);
  leftOut_ += tail - head_ - word_;
  const std::string word = "\n-- " + std::to_string(leftOut_) + " bytes of this text were left out here --\n";
  text_.replace(head_, tail - head_, word);
  word_ = word.size();
}

void KeptText::clear() {
  text_.clear();
  text_.shrink_to_fit();
  head_ = word_ = leftOut_ = 0;
}

std::size_t KeptText::characterAt(std::size_t at) const {
  while (at < text_.size() && (static_cast<std::uint8_t>(text_[at]) & 0xC0U) == 0x80) ++at;
  return at;
}

}  // namespace hy_wristlog
