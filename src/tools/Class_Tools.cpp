#include "tools/Class_Tools.h"

#include "platform/platform.h"

namespace hy_wristlog {

Class_Tools& Tools() { return platform::current().objects().get<Class_Tools>(); }

}  // namespace hy_wristlog
