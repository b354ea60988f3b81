#include "Commands.hpp"
#include "GzipBatch.hpp"

namespace tqarchive {

int runGzip(const CommandLine& commandLine) {
    GzipBatch batch(GzipBatch::Direction::Compress, commandLine.outputFolder);
    for (const std::string& operand : commandLine.operands) {
        batch.add(operand);
    }
    printNames(batch.run(), commandLine.quiet);
    return 0;
}

}  // namespace tqarchive
