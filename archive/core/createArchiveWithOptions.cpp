#include <archive/core/archivecore.hpp>
#include <archive/core/createEntries.hpp>

namespace tessel::io::archive::core {

std::vector<std::u16string> createArchiveWithOptions(const std::u16string& archivePath,
                                                     const std::vector<std::u16string>& files,
                                                     const std::vector<std::u16string>& entryNames,
                                                     const std::u16string& format,
                                                     const CreateOptions& options) {
    // A header libarchive wrote with a warning (a name it could not translate and stored
    // as its bytes) is only logged: the entry is there, and its content follows.
    constexpr CreateFailurePolicy kAsOptionCalls{CreateFailureTable::OptionCalls,
                                                 ArchiveCreator::HeaderWarnings::RefusalsOnly};
    return createEntries(archivePath, files, entryNames, format, options, kAsOptionCalls);
}

}  // namespace tessel::io::archive::core
