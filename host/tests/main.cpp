#include <cstdlib>

#include <gtest/gtest.h>

#include <host/DiagnosticLogger.hpp>

// Writes a record the way the library's log statements do (mask first); returns whether one
// was written. Defined with the logger's tests.
bool logRecord(tessel::host::DiagnosticLogger& logger, int severity, const std::string& text);

int main(int argc, char** argv) {
    // The "log" role: a fresh process, whose first logger configures the sinks from the
    // environment, writes a 512 and a 1 record and stops without flushing anything, as a
    // crash would.
    if (std::getenv("TQHOST_TEST_ROLE") != nullptr) {
        tessel::host::DiagnosticLogger logger("tessel::io::archive::core");
        logRecord(logger, 512, "first record");
        logRecord(logger, 1, "second record");
        std::_Exit(0);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
