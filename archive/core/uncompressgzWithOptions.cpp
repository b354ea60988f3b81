#include <archive/core/archivecore.hpp>
#include <archive/core/decompressGzipFiles.hpp>

namespace tessel::io::archive::core {

std::vector<std::u16string> uncompressgzWithOptions(const std::vector<std::u16string>& files,
                                                    const std::u16string& outputFolder,
                                                    bool exactOutputPath,
                                                    const ExtractOptions& options) {
    return decompressGzipFiles(files, outputFolder, exactOutputPath, options,
                               GunzipFailureTable::OptionCalls);
}

}  // namespace tessel::io::archive::core
