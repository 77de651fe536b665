#pragma once

/// Marks what the shared library exports. Everything else is hidden.
#define HY_WRISTLOG_API __attribute__((visibility("default")))
