#include "Commands.hpp"
#include "GzipBatch.hpp"

namespace tqarchive {

int runGzipBatch(const CommandLine& commandLine) {
    GzipBatch batch(commandLine);
    for (const std::string& operand : commandLine.operands) {
        batch.add(operand);
    }
    ProgressReporter reporter(commandLine.quiet, commandLine.verbose);
    const auto written = batch.run(reporter);
    reporter.clear();
    printNames(written, commandLine.quiet);
    return 0;
}

}  // namespace tqarchive
