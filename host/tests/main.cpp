#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>
#include <boost/log/sources/record_ostream.hpp>

#include <host/DiagnosticLogger.hpp>

namespace {

// A fresh process whose first logger configures the sinks from the environment: writes
// two records the way the library's log statements do (mask first) and exits. Used by the
// diagnostic-logger tests through runRole.
int logTwoRecords() {
    tessel::host::DiagnosticLogger logger("tessel::io::archive::core");
    const std::pair<int, const char*> records[] = {{512, "first record"}, {1, "second record"}};
    for (const auto& [severity, text] : records) {
        if (!logger.enabled(static_cast<std::uint32_t>(severity))) {
            continue;
        }
        if (boost::log::record record = logger.openRecord(severity)) {
            boost::log::record_ostream stream(record);
            stream << text;
            stream.flush();
            logger.pushRecord(std::move(record));
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (const char* role = std::getenv("TQHOST_TEST_ROLE"); role && std::strcmp(role, "log") == 0) {
        return logTwoRecords();
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
