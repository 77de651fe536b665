#include "errors/Procedure.h"
#include "pendrel/Pendrel.h"
#include "pendrel/decoder.h"

namespace hy_wristlog {
namespace {

constexpr char Source[] = "Class_Pendrel.subDecodeDataArrays";

void requireMode(const PendrelRecord& record) {
  const enmDeviceType type = record.Get_DeviceType();
  if (type == Device_Unknown)
    throw Failure(FailureNumber::PendrelDeviceType, Source, "Incompatible Device Type");
  const bool withSteps = type == KR_PENDREL_CRC_STEPS && record.AcquisitionMode == PD_Mode_ActivityAndSteps;
  if (record.AcquisitionMode != PD_Mode_ActivityOnly && !withSteps)
    throw Failure(FailureNumber::PendrelMode, Source, "Invalid Acquisition Mode");
}

}  // namespace

void Pendrel::subDecodeDataArrays() {
  Procedure procedure{Module, "subDecodeDataArrays"};
  procedure.run([&] {
    procedure.statement([&] { requireMode(record); });
    procedure.statement([&] { decodeSamples(record); });
  });
}

}  // namespace hy_wristlog
