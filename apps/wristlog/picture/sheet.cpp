#include "picture/sheet.h"

#include "picture/markup.h"
#include "picture/shapes.h"
#include "picture/style.h"

namespace wristlog::picture {

void Sheet::text(std::string_view classes, double x, double y, std::string_view words) {
  body_ += "<text class=\"a-text";
  if (!classes.empty()) body_.append(" ").append(classes);
  body_ += "\" x=\"" + number(x) + "\" y=\"" + number(y) + "\">" + escaped(words) + "</text>\n";
}

void Sheet::path(std::string_view classes, const std::string& data) {
  if (!data.empty()) body_.append("<path class=\"").append(classes).append("\" d=\"" + data + "\"/>\n");
}

std::string Sheet::svg(std::string_view title, std::string_view description, bool alone) const {
  std::string head = alone ? "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" : "";
  head += "<svg ";
  if (alone) head += "xmlns=\"http://www.w3.org/2000/svg\" ";
  head += "class=\"actogram\" role=\"img\" " + extent() + " aria-labelledby=\"" + id("title") + " " +
          id("desc") + "\">\n<title id=\"" + id("title") + "\">" + escaped(title) + "</title>\n<desc id=\"" +
          id("desc") + "\">" + escaped(description) + "</desc>\n";
  if (alone) head += "<style>\n" + pictureStyle() + "</style>\n";
  head += "<defs>" + hatchPattern(id("hatch")) + "</defs>\n";
  if (alone) head += "<rect class=\"a-paper\" width=\"100%\" height=\"100%\"/>\n";
  return head + body_ + "</svg>\n";
}

std::string Sheet::reference(const std::string& id, const std::string& classes) const {
  return "<svg class=\"actogram " + classes + "\" aria-hidden=\"true\" " + extent() + "><use href=\"#" + id +
         "\"/></svg>\n";
}

std::string Sheet::extent() const {
  const std::string width = number(SheetWidth), height = number(y_);
  return "width=\"" + width + "\" height=\"" + height + "\" viewBox=\"0 0 " + width + " " + height + "\"";
}

}  // namespace wristlog::picture
