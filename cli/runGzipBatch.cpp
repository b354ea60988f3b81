#include "Commands.hpp"
#include "GzipBatch.hpp"

namespace tqarchive {

int runGzipBatch(const CommandLine& commandLine, bool decompress) {
    GzipBatch batch(decompress ? GzipBatch::Direction::Decompress : GzipBatch::Direction::Compress,
                    commandLine.outputFolder);
    for (const std::string& operand : commandLine.operands) {
        batch.add(operand);
    }
    printNames(batch.run(), commandLine.quiet);
    return 0;
}

}  // namespace tqarchive
