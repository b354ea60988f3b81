#include <archive/core/archivecore.hpp>
#include <archive/core/createEntries.hpp>

namespace tessel::io::archive::core {

std::vector<std::u16string> createArchiveWithOptions(const std::u16string& archivePath,
                                                     const std::vector<std::u16string>& files,
                                                     const std::vector<std::u16string>& entryNames,
                                                     const std::u16string& format,
                                                     const CreateOptions& options) {
    return createEntries(archivePath, files, entryNames, format, options, true);
}

}  // namespace tessel::io::archive::core
