#include <algorithm>

#include "base/code_page.h"
#include "link/CommState.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

bool Form_Comm::Get_Visible() const { return state_->consoleVisible; }

void Form_Comm::show() {
  state_->sink = state_->world->host().console();
  state_->consoleVisible = true;
}

void Form_Comm::hide() { state_->consoleVisible = false; }

void Form_Comm::subShowCOM(std::string_view text) {
  if (!state_->consoleInUse()) return;
  if (text == "\r") text = "\r\n";
  if (state_->consoleVisible) {
    const std::string shown = utf8FromAnsiText(text);
    state_->consoleText.append(shown);
    select(SIZE_MAX, 0);
    if (state_->sink != nullptr) state_->sink->append(shown);
  }
  if (RaiseEventOnChar) {
    std::string characters{text};
    state_->owner->CommRX(characters);
  }
}

void CommState::showHex(std::string_view bytes, std::string_view lineEnd) {
  if (!consoleInUse()) return;
  std::string text = "[";
  for (const std::uint8_t byte : asBytes(bytes)) text += Tools().fncConvertByteToHexString(byte);
  text += ']';
  text += lineEnd;
  form.subShowCOM(text);
}

const std::string& Form_Comm::consoleText() const { return state_->consoleText.text(); }

void Form_Comm::select(std::size_t start, std::size_t length) {
  const std::string& text = consoleText();
  const auto insideCharacter = [&](std::size_t at) {
    return at < text.size() && (static_cast<std::uint8_t>(text[at]) & 0xC0U) == 0x80;
  };
  start = std::min(start, text.size());
  std::size_t end = start + std::min(length, text.size() - start);
  while (insideCharacter(start)) --start;
  while (insideCharacter(end)) ++end;
  state_->selectionStart = start;
  state_->selectionLength = length > 0 ? end - start : 0;
}

std::string_view Form_Comm::selectedText() const {
  return std::string_view(consoleText()).substr(state_->selectionStart, state_->selectionLength);
}

void Form_Comm::cmdClear() {
  state_->consoleText.clear();
  select(0, 0);
  if (state_->sink != nullptr) state_->sink->clear();
}

void Form_Comm::cmdCopySelection() {
  const std::string_view selected = selectedText();
  if (!selected.empty()) state_->world->host().copyToClipboard(selected);
}

void Form_Comm::cmdCopyAll() {
  if (!consoleText().empty()) state_->world->host().copyToClipboard(consoleText());
}

void Form_Comm::cmdDataOverrun() { state_->lastCOMerrorNum = comm_event::Overrun; }

}  // namespace hy_wristlog
