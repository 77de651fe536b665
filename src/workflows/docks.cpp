#include "hy_wristlog/docks.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "base/ascii.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/failure.h"
#include "platform/listed_docks.h"
#include "platform/one_dock_world.h"
#include "platform/work_under_way.h"
#include "varden/commands/dock_products.h"
#include "workflows/dock_names.h"
#include "workflows/docked_model.h"

namespace hy_wristlog {
namespace {

using platform::OneDockWorld;

constexpr const char* Source = "useDock";

enmLoggerPointer pointerOf(enmDeviceType type) {
  return type == KR_QUILLANDER ? LggrPntr_KRVivid : LggrPntr_KRII;
}

Dock dockOf(platform::ListedDock listed, enmLoggerPointer model) {
  Dock dock{listed.Names.front(), {}, model, listed.Port};
  listed.Names.erase(listed.Names.begin());
  dock.OtherNames = std::move(listed.Names);
  return dock;
}

/// A plain port may give a dock of the tree another number; it is no dock of its own then.
bool hasPort(const std::vector<Dock>& docks, std::int32_t port) {
  return std::any_of(docks.begin(), docks.end(), [&](const Dock& dock) { return dock.Port == port; });
}

std::vector<Dock> docksIn(platform::Platform& world) {
  std::vector<Dock> found;
  try {
    for (const dock_products::DockProduct& product : dock_products::All)
      for (platform::ListedDock& listed : platform::devicesOf(world.deviceTree(), product.Class))
        if (dock_products::isOf(product, listed.HardwareId))
          found.push_back(dockOf(std::move(listed), pointerOf(product.Type)));
    for (platform::ListedDock& listed : platform::devicesOf(world.deviceTree(), platform::PlainPortClass))
      if (!hasPort(found, listed.Port)) found.push_back(dockOf(std::move(listed), LggrPntr_Pendreader));
  } catch (const platform::SystemError& error) {
    throw Failure(error.Number, "docks", world.environment().errorText(error.Number));
  }
  return found;
}

std::string wordsOf(enmLoggerPointer model) {
  const DockedModel* docked = dockedModel(model);
  return docked != nullptr ? docked->Words : "Pendreader";
}

std::string listOf(const std::vector<Dock>& docks) {
  std::string words;
  for (const Dock& dock : docks)
    words += (words.empty() ? "" : ", ") + dock.Name + " (" + wordsOf(dock.Model) +
             (dock.Port > 0 ? ", COM" + std::to_string(dock.Port) : std::string()) + ")";
  return words.empty() ? "There is no dock" : "The docks are: " + words;
}

bool isDevice(const std::string& name) {
  return name.starts_with('/') || name.find("://") != std::string::npos;
}

void requireIdle() {
  const auto* work = platform::current().objects().find<platform::WorkUnderWay>();
  if (work != nullptr && work->Count > 0)
    throw Failure(FailureNumber::InvalidCall, Source, "A workflow is under way; its dock cannot be changed");
}

/// The thread's world with all its docks.
std::shared_ptr<platform::Platform> wholeWorld() {
  std::shared_ptr<platform::Platform> world = platform::shareCurrent();
  const auto* view = dynamic_cast<const OneDockWorld*>(world.get());
  return view != nullptr ? view->inner() : world;
}

void leaveView() {
  const std::shared_ptr<platform::Platform> world = wholeWorld();
  platform::use(nullptr);
  if (platform::shareCurrent() != world) platform::use(world);
}

/// Takes a view from the thread before its own machine ends, whose objects may ask for their world.
struct ViewsEnd {
  ViewsEnd() {
    // Made before this, the thread's own machine ends after it, also where the thread has another world now.
    const std::shared_ptr<platform::Platform> present = platform::use(nullptr);
    platform::shareCurrent();
    platform::use(present);
  }
  ViewsEnd(const ViewsEnd&) = delete;
  ViewsEnd& operator=(const ViewsEnd&) = delete;
  ~ViewsEnd() {
    if (!dockInUse().empty()) leaveView();
  }
};

void look(std::shared_ptr<platform::Platform> view) {
  thread_local const ViewsEnd end;
  platform::use(std::move(view));
}

std::shared_ptr<OneDockWorld> viewOfDevice(const std::shared_ptr<platform::Platform>& world,
                                           const std::string& device, enmLoggerPointer model) {
  if (model == LggrPntr_Pendreader)
    return std::make_shared<OneDockWorld>(world, device, "", platform::PlainPortClass);
  const dock_products::DockProduct& product =
      model == LggrPntr_KRVivid ? dock_products::Quillander : dock_products::TolkaSecond;
  return std::make_shared<OneDockWorld>(
      world, device,
      std::string("USB\\VID_") + dock_products::VendorID + "&PID_" + product.ProductID + "&REV_0000",
      product.Class);
}

}  // namespace

std::vector<Dock> docks() { return docksIn(*wholeWorld()); }

void useDock(const std::string& name, enmLoggerPointer model) {
  requireIdle();
  const std::shared_ptr<platform::Platform> world = wholeWorld();
  const std::vector<Dock> all = docksIn(*world);
  std::vector<Dock> found;
  std::copy_if(all.begin(), all.end(), std::back_inserter(found),
               [&](const Dock& dock) { return answersTo(dock, name); });
  if (found.size() > 1)
    throw Failure(ReturnCode::TooManyDocks, Source,
                  "Several docks are called \"" + name + "\": choose by the first name. " + listOf(found));
  const bool namesModel = dockedModel(model) != nullptr || model == LggrPntr_Pendreader;
  if (found.empty() && isDevice(name) && namesModel) return look(viewOfDevice(world, name, model));
  if (found.empty())
    throw Failure(ReturnCode::NotFound, Source,
                  isDevice(name)
                      ? "\"" + name +
                            "\" is the device of no dock that is known: name the logger's model too, or "
                            "declare it in Docks.INI. " +
                            listOf(all)
                      : "No dock is called \"" + name + "\". " + listOf(all));
  if (model != LggrPntr_None && model != found.front().Model)
    throw Failure(ReturnCode::WrongLogger, Source,
                  "The dock " + found.front().Name + " is one of a " + wordsOf(found.front().Model) +
                      ", not of a " + wordsOf(model));
  look(std::make_shared<OneDockWorld>(world, found.front().Name));
}

void useAllDocks() {
  requireIdle();
  if (!dockInUse().empty()) leaveView();
}

std::string dockInUse() {
  const auto* view = dynamic_cast<const OneDockWorld*>(&platform::current());
  return view != nullptr ? view->dock() : std::string();
}

namespace {

std::optional<Dock> dockCalled(const std::string& name) {
  for (Dock& dock : docks())
    if (answersTo(dock, name)) return std::move(dock);
  return std::nullopt;
}

}  // namespace

TextSeries Class_Main::Get_DockNames() const {
  TextSeries names;
  for (const Dock& dock : docks()) names.push_back(dock.Name);
  return names;
}

TextSeries Class_Main::NamesOfDock(const std::string& Name) {
  TextSeries names;
  if (auto dock = dockCalled(Name)) {
    names = std::move(dock->OtherNames);
    names.insert(names.begin(), dock->Name);
  }
  return names;
}

enmLoggerPointer Class_Main::ModelOfDock(const std::string& Name) {
  const auto dock = dockCalled(Name);
  return dock ? dock->Model : LggrPntr_None;
}

std::int32_t Class_Main::PortOfDock(const std::string& Name) {
  const auto dock = dockCalled(Name);
  return dock ? dock->Port : 0;
}

void Class_Main::UseDock(const std::string& Name) { Name.empty() ? useAllDocks() : useDock(Name); }

void Class_Main::UseDevice(const std::string& Device, enmLoggerPointer LoggerType) {
  useDock(Device, LoggerType);
}

std::string Class_Main::Get_DockInUse() const { return dockInUse(); }

}  // namespace hy_wristlog
