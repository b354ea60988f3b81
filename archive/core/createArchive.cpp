#include <archive/core/archivecore.hpp>
#include <archive/core/createEntries.hpp>

namespace tessel::io::archive::core {

namespace {

// createArchive's identifiers, and every header libarchive does not write as asked is
// warned about.
constexpr CreateFailurePolicy kAsCreateArchive{CreateFailureTable::CreateArchive,
                                               ArchiveCreator::HeaderWarnings::Issued};

}  // namespace

std::vector<std::u16string> createArchive(const std::u16string& archivePath,
                                          const std::vector<std::u16string>& files,
                                          const std::vector<std::u16string>& entryNames,
                                          const std::u16string& format) {
    return createEntries(archivePath, files, entryNames, format, CreateOptions(), kAsCreateArchive);
}

std::vector<std::u16string> createArchive(const std::u16string& archivePath,
                                          const std::vector<std::u16string>& files,
                                          const std::vector<std::u16string>& entryNames,
                                          const std::u16string& format,
                                          const std::u16string& password,
                                          const std::u16string& encryptionMethod) {
    CreateOptions options;
    options.password = password;
    options.encryption = encryptionMethod;
    return createEntries(archivePath, files, entryNames, format, options, kAsCreateArchive);
}

}  // namespace tessel::io::archive::core
