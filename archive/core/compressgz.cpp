#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>
#include <archive/core/compressGzipFiles.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

std::vector<std::u16string> compressgz(const std::vector<std::u16string>& files,
                                       const std::u16string& outputFolder) {
    if (files.empty()) {
        return {};
    }
    // Refused before anything is written, rather than cut or altered on the way.
    for (std::size_t i = 0; i < files.size(); ++i) {
        tessel::host::requireFileSystemName(files[i], "files[" + std::to_string(i) + "]");
    }
    tessel::host::requireFileSystemName(outputFolder, "outputFolder");
    return compressGzipFiles(files, GzipOutputs{outputFolder, std::nullopt}, CreateOptions(),
                             GzipFailureTable::Compressgz);
}

}  // namespace tessel::io::archive::core
