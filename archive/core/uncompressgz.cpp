#include <archive/core/archivecore.hpp>
#include <archive/core/decompressGzipFiles.hpp>

namespace tessel::io::archive::core {

std::vector<std::u16string> uncompressgz(const std::vector<std::u16string>& files,
                                         const std::u16string& outputFolder, bool exactOutputPath) {
    ExtractOptions options;
    options.gunzipKeepsInputMode = false;
    return decompressGzipFiles(files, outputFolder, exactOutputPath, options,
                               GunzipFailureTable::Uncompressgz);
}

}  // namespace tessel::io::archive::core
