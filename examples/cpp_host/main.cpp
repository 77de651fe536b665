// Says what state the docked logger is in and, with a folder, retrieves its activity into a text file there:
//     cpp_host vivid|kestrin2 [FILE]
#include <hy_wristlog/Class_Main.h>
#include <hy_wristlog/host.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <string>

using namespace hy_wristlog;

namespace {

class ConsoleHost : public Host {
 public:
  void downloadProgress(std::int32_t bytesSoFar, std::int32_t bytesExpected) override {
    std::cerr << '\r' << bytesSoFar << " of " << bytesExpected << " bytes" << std::flush;
  }
};

int retrieve(Class_Main& main, enmLoggerPointer model, const std::string& path) {
  std::shared_ptr<Class_VardenLogger> logger;
  auto subject = std::make_shared<Class_Subject>();
  enmDecodeResult verdict{};
  const std::int32_t code = main.Retrieve(model, logger, subject, verdict);
  if (code != 0) {
    std::cerr << "Not retrieved: code " << code << '\n';
    return 1;
  }
  std::ofstream file(path);
  for (const std::int32_t counts : logger->Get_ActivityArray()) file << counts << '\n';
  std::cout << logger->Get_Samples() << " epochs of " << subject->Get_Identity() << '\n';
  return file.flush() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::cerr << "usage: cpp_host vivid|kestrin2 [FILE]\n";
    return 2;
  }
  const enmLoggerPointer model = std::string(argv[1]) == "vivid" ? LggrPntr_KRVivid : LggrPntr_KRII;
  setHost(std::make_shared<ConsoleHost>());

  Class_Main main;
  if (argc == 3) return retrieve(main, model, argv[2]);
  std::string state;
  std::string words;
  std::shared_ptr<Class_VardenLogger> logger;
  std::shared_ptr<Class_Subject> subject;
  const std::int32_t code = main.GetStatus(model, state, words, logger, subject);
  std::cout << "HY_Wristlog " << main.Get_Version() << '\n' << state << '\n' << words << '\n';
  return code == 0 ? 0 : 1;
}
