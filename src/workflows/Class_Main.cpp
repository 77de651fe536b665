#include <utility>

#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "platform/platform.h"
#include "start_up/start_up.h"
#include "workflows/main_state.h"

namespace hy_wristlog {
void MainState::follow(std::shared_ptr<LoggerEvents> follower) {
  ActiveLogger->unsubscribe(Follower);
  Follower = std::move(follower);
  ActiveLogger->subscribe(Follower);
}

void MainState::makeActiveLogger() {
  ActiveLogger->unsubscribe(Follower);
  ActiveLogger = std::make_shared<Class_VardenLogger>();
  ActiveLogger->subscribe(Follower);
  platform::current().host().workflowStarted(ActiveLogger);
}

Class_Main::Class_Main() {
  openLibrary();
  inside_ = std::make_unique<MainState>();
}

Class_Main::~Class_Main() = default;

std::int16_t Class_Main::Get_MaxCommunicationRetries() const { return inside_->MaxCommunicationRetries; }
void Class_Main::Let_MaxCommunicationRetries(std::int16_t value) { inside_->MaxCommunicationRetries = value; }
std::string Class_Main::Get_Version() const { return globals().VersionFull; }
bool Class_Main::Get_LegacyClearMemoryOnConfigure() const { return inside_->LegacyClearMemoryOnConfigure; }
void Class_Main::Let_LegacyClearMemoryOnConfigure(bool value) {
  inside_->LegacyClearMemoryOnConfigure = value;
}
std::int16_t Class_Main::Get_LegacyCOMport() const { return inside_->LegacyCOMport; }
bool Class_Main::Get_WakeOnInput() const { return inside_->WakeOnInput; }
void Class_Main::Let_WakeOnInput(bool value) { inside_->WakeOnInput = value; }

Date Class_Main::LoggerSecondsToDate(std::int32_t LoggerSeconds1970) {
  Procedure procedure{"Class_Main", "LoggerSecondsToDate", ProcedureKind::Command};
  return procedure.run([&] { return VardenLogger::fncLoggerSecondsToDate(LoggerSeconds1970); });
}

std::int32_t Class_Main::DateToLoggerSeconds(Date TheDate) {
  Procedure procedure{"Class_Main", "DateToLoggerSeconds", ProcedureKind::Command};
  return procedure.run([&] { return VardenLogger::fncDateToLoggerSeconds(TheDate); });
}

void Class_Main::AbortComms() { inside_->AbortFlag = true; }

}  // namespace hy_wristlog
