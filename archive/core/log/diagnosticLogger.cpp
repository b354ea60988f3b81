#include <archive/core/log/diagnosticLogger.hpp>

#include <string>

namespace tessel::io::archive::core {

tessel::host::DiagnosticLogger& diagnosticLogger() {
    // Created once, on first use, and never destroyed: a call made from an atexit handler,
    // a static destructor or a thread still running while the process exits must find it.
    static tessel::host::DiagnosticLogger* const logger =
        new tessel::host::DiagnosticLogger(std::string(kDiagnosticChannel));
    return *logger;
}

}  // namespace tessel::io::archive::core
