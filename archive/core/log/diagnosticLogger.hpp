#pragma once

#include <host/DiagnosticLogger.hpp>

namespace tessel::io::archive::core {

inline constexpr const char* kDiagnosticChannel = "tessel::io::archive::core";

// The library's one logger, created on first use.
tessel::host::DiagnosticLogger& diagnosticLogger();

}  // namespace tessel::io::archive::core
