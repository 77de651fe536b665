#include "component/arguments.h"

#include "component/variants.h"

namespace hy_wristlog::component {
namespace {

void requireArrays(const HyDispParams& params) {
  if ((params.cArgs > 0 && params.rgvarg == nullptr) ||
      (params.cNamedArgs > 0 && params.rgdispidNamedArgs == nullptr))
    throw Refusal{HY_E_POINTER};
  if (params.cNamedArgs > params.cArgs) throw Refusal{HY_E_INVALIDARG};
}

}  // namespace

void Arguments::place(const HyDispParams& params, std::uint32_t index, std::size_t parameter) {
  blamed_ = index;
  if (places_[parameter] >= 0) throw Refusal{HY_E_INVALIDARG};
  places_[parameter] = index;
  HyVariant& argument = params.rgvarg[index];
  if (!isMissing(argument.vt & HY_VT_BYREF ? valueOf(argument) : argument)) arguments_[parameter] = &argument;
}

void Arguments::sort(const HyDispParams& params, const Member& member) {
  requireArrays(params);
  const std::size_t count = member.Parameters.size();
  if (params.cArgs > count) throw Refusal{HY_DISP_E_BADPARAMCOUNT};
  if (params.cNamedArgs == 0 && params.cArgs < member.Required) throw Refusal{HY_DISP_E_BADPARAMCOUNT};
  parameters_ = member.Parameters;
  places_.fill(-1);
  for (std::uint32_t i = params.cNamedArgs; i < params.cArgs; ++i) place(params, i, params.cArgs - 1 - i);
  for (std::uint32_t i = 0; i < params.cNamedArgs; ++i) {
    const std::int32_t number = params.rgdispidNamedArgs[i];
    blamed_ = i;
    if (number < 0 || static_cast<std::size_t>(number) >= count) throw Refusal{HY_DISP_E_PARAMNOTFOUND};
    place(params, i, static_cast<std::size_t>(number));
  }
  for (std::size_t i = 0; i < member.Required; ++i) {
    blamed_ = places_[i];
    if (arguments_[i] == nullptr) throw Refusal{HY_DISP_E_PARAMNOTOPTIONAL};
  }
  blamed_ = -1;
}

void Arguments::sortNewValue(const HyDispParams& params) {
  requireArrays(params);
  if (params.cArgs != 1) throw Refusal{HY_DISP_E_BADPARAMCOUNT};
  places_[0] = blamed_ = 0;
  if (params.cNamedArgs != 1 || params.rgdispidNamedArgs[0] != HY_DISPID_PROPERTYPUT)
    throw Refusal{HY_DISP_E_PARAMNOTFOUND};
  if (isMissing(params.rgvarg[0])) throw Refusal{HY_DISP_E_PARAMNOTOPTIONAL};
  arguments_[0] = &params.rgvarg[0];
}

}  // namespace hy_wristlog::component
