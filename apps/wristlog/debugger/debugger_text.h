#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wristlog {

/// The text of the Communications Debugger as a window sees it: wrapped to the window's width, with a caret
/// and a selection. With the caret at the end the window follows what is appended; after the caret was moved
/// up, or a mark was set, it stays in its place. Knows nothing of terminals.
class DebuggerText {
 public:
  static constexpr std::size_t MostCharacters = std::size_t{16} << 20;

  /// Keeps the last `most` characters or somewhat fewer.
  explicit DebuggerText(std::size_t most = MostCharacters) : most_(most) {}

  /// Appends UTF-8, made visible by `visibleCharacters`.
  void append(std::string_view utf8);
  void clear();
  /// The window's size in cells; each at least 1.
  void resize(std::size_t width, std::size_t height);

  enum class Motion : std::uint8_t { Left, Right, Up, Down, PageUp, PageDown, Start, End };
  /// Moves the caret and the window with it. `select` sets the mark first when there is none.
  void move(Motion motion, bool select = false);
  /// Moves the window alone; the caret moves along only to stay visible.
  void scroll(std::ptrdiff_t rows);
  /// Begins a selection at the caret, or gives up the present one.
  void toggleMark();
  void dropMark() { mark_.reset(); }
  bool hasMark() const { return mark_.has_value(); }

  /// Moves the caret to a cell of the window and sets the mark there.
  void press(std::size_t row, std::size_t column);
  /// Selects from the pressed cell to this one, both included; nothing when they are the same.
  void release(std::size_t row, std::size_t column);

  bool atEnd() const { return caret_ == end(); }
  bool empty() const { return text_.empty(); }
  std::string text() const;
  /// Empty without a selection.
  std::string selectedText() const;

  struct Row {
    std::u16string_view Text;
    std::size_t SelectedFrom = 0, SelectedTo = 0;  ///< columns
  };
  /// The window's rows from the top; fewer than its height when the text is short.
  std::vector<Row> window() const;
  struct Cell {
    std::size_t Row = 0, Column = 0;
  };
  /// The caret's cell in the window; no value when it lies outside.
  std::optional<Cell> caret() const;

 private:
  // Positions count from the first character that ever came, so they stay valid when the oldest text is
  // dropped.
  using Position = std::size_t;

  Position end() const { return base_ + text_.size(); }
  std::size_t rowOf(Position position) const;
  std::size_t lengthOf(std::size_t row) const;
  Position at(std::size_t row, std::size_t column) const;
  Position cell(std::size_t row, std::size_t column) const;
  std::size_t topRow() const { return rowOf(top_); }
  std::size_t lastTop() const { return rows_.size() > height_ ? rows_.size() - height_ : 0; }
  void layOut(Position from);
  void dropOldest();
  void moveVertically(std::ptrdiff_t rows);
  void turnPage(std::ptrdiff_t rows);
  void moveWindow(std::ptrdiff_t rows);
  void showCaret();

  std::size_t most_;
  std::size_t width_ = 80, height_ = 24;
  Position base_ = 0;
  std::u16string text_;
  std::vector<Position> rows_{0};  ///< where each row begins
  Position top_ = 0, caret_ = 0;
  std::optional<Position> mark_, pressed_;
  std::optional<std::size_t> goal_;  ///< the column that vertical motions keep
};

}  // namespace wristlog
