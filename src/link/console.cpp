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
    state_->consoleText += shown;
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

const std::string& Form_Comm::consoleText() const { return state_->consoleText; }

void Form_Comm::cmdClear() { state_->consoleText.clear(); }

void Form_Comm::cmdCopyAll() {
  if (!state_->consoleText.empty()) state_->world->host().copyToClipboard(state_->consoleText);
}

void Form_Comm::cmdDataOverrun() { state_->lastCOMerrorNum = comm_event::Overrun; }

}  // namespace hy_wristlog
