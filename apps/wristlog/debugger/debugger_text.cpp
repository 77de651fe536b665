#include "debugger/debugger_text.h"

#include <algorithm>

#include "words/safe_text.h"

namespace wristlog {

void DebuggerText::append(std::string_view utf8) {
  const bool following = atEnd() && !mark_;
  const Position from = end();
  text_ += visibleCharacters(utf8);
  layOut(from);
  if (following) caret_ = end();
  if (text_.size() > most_) dropOldest();
  if (following) showCaret();
}

void DebuggerText::clear() {
  base_ = end();
  text_.clear();
  text_.shrink_to_fit();
  rows_.assign(1, base_);
  top_ = caret_ = base_;
  mark_.reset();
  pressed_.reset();
}

void DebuggerText::resize(std::size_t width, std::size_t height) {
  width = std::max<std::size_t>(width, 1);
  const bool caretSeen = caret().has_value();
  height_ = std::max<std::size_t>(height, 1);
  if (width != width_) {
    width_ = width;
    rows_.assign(1, base_);
    layOut(base_);
  }
  top_ = rows_[std::min(topRow(), lastTop())];
  if (caretSeen) showCaret();
}

void DebuggerText::move(Motion motion, bool select) {
  if (select && !mark_) mark_ = caret_;
  const auto page = static_cast<std::ptrdiff_t>(std::max<std::size_t>(height_ - 1, 1));
  switch (motion) {
    case Motion::Up:
      return moveVertically(-1);
    case Motion::Down:
      return moveVertically(1);
    case Motion::PageUp:
      return turnPage(-page);
    case Motion::PageDown:
      return turnPage(page);
    case Motion::Left:
      if (caret_ > base_) --caret_;
      break;
    case Motion::Right:
      if (caret_ < end()) ++caret_;
      break;
    case Motion::Start:
      caret_ = base_;
      break;
    case Motion::End:
      caret_ = end();
      break;
  }
  goal_.reset();
  showCaret();
}

void DebuggerText::moveVertically(std::ptrdiff_t rows) {
  const std::size_t row = rowOf(caret_);
  if (!goal_) goal_ = caret_ - rows_[row];
  const auto target = std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(row) + rows, 0,
                                                 static_cast<std::ptrdiff_t>(rows_.size()) - 1);
  caret_ = at(static_cast<std::size_t>(target), *goal_);
  showCaret();
}

/// Moves window and caret together, so that no row is shown on two pages.
void DebuggerText::turnPage(std::ptrdiff_t rows) {
  moveWindow(rows);
  moveVertically(rows);
}

void DebuggerText::moveWindow(std::ptrdiff_t rows) {
  const auto target = std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(topRow()) + rows, 0,
                                                 static_cast<std::ptrdiff_t>(lastTop()));
  top_ = rows_[static_cast<std::size_t>(target)];
}

void DebuggerText::scroll(std::ptrdiff_t rows) {
  moveWindow(rows);
  if (mark_) return;
  const std::size_t top = topRow();
  const std::size_t row = rowOf(caret_);
  if (top == lastTop() && rows > 0)
    caret_ = end();
  else if (row < top)
    caret_ = rows_[top];
  else if (row >= top + height_)
    caret_ = rows_[top + height_ - 1];
  goal_.reset();
}

void DebuggerText::toggleMark() {
  if (mark_)
    mark_.reset();
  else
    mark_ = caret_;
}

void DebuggerText::press(std::size_t row, std::size_t column) {
  caret_ = cell(row, column);
  mark_ = pressed_ = caret_;
  goal_.reset();
}

void DebuggerText::release(std::size_t row, std::size_t column) {
  if (!pressed_) return;
  const Position released = cell(row, column);
  const Position pressed = std::max(*pressed_, base_);
  pressed_.reset();
  caret_ = released;
  mark_ = pressed;
  if (released == pressed) {
    mark_.reset();
  } else if (released > pressed) {
    caret_ = std::min(released + 1, end());
  } else {
    mark_ = std::min(pressed + 1, end());
  }
}

std::string DebuggerText::text() const { return utf8Of(text_); }

std::string DebuggerText::selectedText() const {
  if (!mark_) return {};
  const auto [from, to] = std::minmax(*mark_, caret_);
  return utf8Of(std::u16string_view(text_).substr(from - base_, to - from));
}

std::vector<DebuggerText::Row> DebuggerText::window() const {
  std::vector<Row> rows;
  const auto [from, to] = std::minmax({mark_.value_or(caret_), caret_});
  const std::size_t top = topRow();
  for (std::size_t i = top; i < std::min(top + height_, rows_.size()); ++i) {
    const Position begin = rows_[i];
    const std::size_t length = lengthOf(i);
    const auto column = [&](Position position) {
      return std::clamp(position, begin, begin + length) - begin;
    };
    rows.push_back({std::u16string_view(text_).substr(begin - base_, length), column(from), column(to)});
  }
  return rows;
}

std::optional<DebuggerText::Cell> DebuggerText::caret() const {
  const std::size_t row = rowOf(caret_);
  const std::size_t top = topRow();
  if (row < top || row >= top + height_) return {};
  return Cell{row - top, std::min(caret_ - rows_[row], width_ - 1)};
}

std::size_t DebuggerText::rowOf(Position position) const {
  return static_cast<std::size_t>(std::upper_bound(rows_.begin() + 1, rows_.end(), position) -
                                  rows_.begin()) -
         1;
}

/// The length of a row without its line end.
std::size_t DebuggerText::lengthOf(std::size_t row) const {
  if (row + 1 == rows_.size()) return end() - rows_[row];
  const std::size_t length = rows_[row + 1] - rows_[row];
  return text_[rows_[row + 1] - 1 - base_] == u'\n' ? length - 1 : length;
}

DebuggerText::Position DebuggerText::at(std::size_t row, std::size_t column) const {
  return rows_[row] + std::min(column, lengthOf(row));
}

DebuggerText::Position DebuggerText::cell(std::size_t row, std::size_t column) const {
  return at(std::min(topRow() + std::min(row, height_ - 1), rows_.size() - 1), column);
}

/// Cuts the text into rows. A line end belongs to the row that it ends, so no empty row follows a line that
/// just fits.
void DebuggerText::layOut(Position from) {
  std::size_t column = from - rows_.back();
  for (Position position = from; position < end(); ++position) {
    if (text_[position - base_] == u'\n') {
      rows_.push_back(position + 1);
      column = 0;
      continue;
    }
    if (column == width_) {
      rows_.push_back(position);
      column = 0;
    }
    ++column;
  }
}

void DebuggerText::dropOldest() {
  const std::size_t surplus = text_.size() - most_ + most_ / 8;
  const std::size_t row = std::min(rowOf(base_ + surplus) + 1, rows_.size() - 1);
  base_ = std::max(rows_[row], base_);
  text_.erase(0, base_ - rows_.front());
  rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(row));
  for (Position* position : {&top_, &caret_}) *position = std::max(*position, base_);
  if (mark_) mark_ = std::max(*mark_, base_);
}

void DebuggerText::showCaret() {
  const std::size_t row = rowOf(caret_);
  std::size_t top = std::min({topRow(), lastTop(), row});
  if (row >= top + height_) top = row - height_ + 1;
  top_ = rows_[top];
}

}  // namespace wristlog
