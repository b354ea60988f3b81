#include "Commands.hpp"
#include "GzipBatch.hpp"

namespace tqarchive {

int runGunzip(const CommandLine& commandLine) {
    GzipBatch batch(GzipBatch::Direction::Decompress, commandLine.outputFolder);
    for (const std::string& operand : commandLine.operands) {
        batch.add(operand);
    }
    printNames(batch.run(), commandLine.quiet);
    return 0;
}

}  // namespace tqarchive
