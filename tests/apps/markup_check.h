#pragma once

#include <cctype>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// What is wrong with a text as XML 1.0, as far as pictures use it; empty when it is well-formed.
class MarkupCheck {
 public:
  static std::string problemOf(std::string_view text) { return MarkupCheck(text).run(); }

 private:
  explicit MarkupCheck(std::string_view text) : text_(text) {}

  std::string run() {
    for (const std::string_view prolog : {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>", "<!DOCTYPE html>"})
      if (text_.starts_with(prolog)) text_.remove_prefix(prolog.size());
    while (problem_.empty() && !text_.empty()) text_.front() == '<' ? tag() : data();
    if (problem_.empty() && !open_.empty()) fail(open_.back() + " is not closed");
    for (const std::string& id : named_)
      if (problem_.empty() && !ids_.contains(id)) fail("no id " + id);
    return problem_;
  }

  void data() {
    checkText(text_.substr(0, text_.find('<')));
    text_.remove_prefix(std::min(text_.find('<'), text_.size()));
  }

  void tag() {
    const std::size_t end = text_.find('>');
    if (end == text_.npos) return fail("a tag without an end");
    std::string_view inside = text_.substr(1, end - 1);
    text_.remove_prefix(end + 1);
    if (inside.starts_with("/")) {
      if (open_.empty() || open_.back() != inside.substr(1))
        return fail("</" + std::string(inside.substr(1)));
      return open_.pop_back();
    }
    const bool empty = inside.ends_with("/");
    if (empty) inside.remove_suffix(1);
    const std::size_t blank = std::min(inside.find(' '), inside.size());
    const std::string name(inside.substr(0, blank));
    for (const char c : name)
      if (std::isalnum(static_cast<unsigned char>(c)) == 0) return fail("<" + name);
    attributes(inside.substr(blank));
    if (!empty) open_.push_back(name);
  }

  void attributes(std::string_view rest) {
    std::set<std::string> names;
    while (problem_.empty() && !rest.empty()) {
      const std::size_t equals = rest.find("=\"");
      const std::size_t end = equals == rest.npos ? rest.npos : rest.find('"', equals + 2);
      if (rest.front() != ' ' || end == rest.npos) return fail("attributes " + std::string(rest));
      const std::string name(rest.substr(1, equals - 1));
      if (!names.insert(name).second) return fail("twice " + name);
      const std::string_view value = rest.substr(equals + 2, end - equals - 2);
      checkText(value);
      if (name == "id" && !ids_.emplace(value).second) return fail("twice id " + std::string(value));
      if (name == "href" && value.starts_with('#')) named_.emplace(value.substr(1));
      rest.remove_prefix(end + 1);
    }
  }

  void checkText(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto c = static_cast<unsigned char>(text[i]);
      if (c < 0x20 && c != '\n') return fail("a control character");
      if (c != '&') continue;
      const std::string_view name = text.substr(i, text.find(';', i) - i + 1);
      if (name != "&amp;" && name != "&lt;" && name != "&gt;" && name != "&quot;" && name != "&#39;")
        return fail("reference " + std::string(name));
    }
  }

  void fail(const std::string& problem) { problem_ = problem; }

  std::string_view text_;
  std::vector<std::string> open_;
  std::set<std::string> ids_, named_;
  std::string problem_;
};
