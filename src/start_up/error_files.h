#pragma once

#include <vector>

#include "errors/Class_ErrorAction.h"

namespace hy_wristlog {

/// The site's actions from ErrorActions.XML beside the library; none when there is no such file.
std::vector<Class_ErrorAction> fncPopulateXMLErrorActions();

/// Fills the thread's error actions: the site's, then the library's own.
void fncLoadGlobalErrors();

/// Writes the thread's error stack to its log in the common data folder. It replaces an earlier log of the
/// same stack and no other. Raises the faults of writing files.
void fncSaveXMLErrorRecords();

}  // namespace hy_wristlog
