#include <archive/core/log/diagnosticLogger.hpp>

#include <string>

namespace tessel::io::archive::core {

tessel::host::DiagnosticLogger& diagnosticLogger() {
    // Created once, on first use, and destroyed when the library is unloaded.
    static tessel::host::DiagnosticLogger logger{std::string(kDiagnosticChannel)};
    return logger;
}

}  // namespace tessel::io::archive::core
