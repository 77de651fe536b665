#pragma once

#include <string>
#include <string_view>

namespace wristlog::picture {

inline constexpr double SheetLeft = 120, PlotWidth = 864, SheetRight = 78;
inline constexpr double SheetWidth = SheetLeft + PlotWidth + SheetRight;

/// An SVG picture that grows downwards.
class Sheet {
 public:
  /// `name` is the prefix of its identifiers, so that several sheets can share a page.
  explicit Sheet(std::string name) : name_(std::move(name)) {}

  double y() const { return y_; }
  void down(double pixels) { y_ += pixels; }
  std::string id(const std::string& what) const { return name_ + "-" + what; }

  /// Adds markup as it is.
  void add(std::string_view markup) { body_ += markup; }
  /// Adds any text, escaped, with its base line at `y`.
  void text(std::string_view classes, double x, double y, std::string_view words);
  void path(std::string_view classes, const std::string& data);

  /// The whole element. `title` and `description` are for readers who cannot see it. With `alone` it also has
  /// paper, style and namespace.
  std::string svg(std::string_view title, std::string_view description, bool alone) const;
  /// An element of the same size that shows an element of another one on the page. `id` is that one's.
  std::string reference(const std::string& id, const std::string& classes) const;

 private:
  std::string extent() const;

  std::string name_, body_;
  double y_ = 0;
};

}  // namespace wristlog::picture
