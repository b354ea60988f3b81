#include <string>
#include <vector>

#include <archive/core/EntrySelection.hpp>
#include <archive/core/NamedEntrySelection.hpp>
#include <archive/core/archivecore.hpp>
#include <archive/core/extractEntries.hpp>

namespace tessel::io::archive::core {

namespace {

constexpr ExtractFailurePolicy kAsExtractArchive{ExtractFailureTable::ExtractArchive,
                                                 ExtractCleanup::CurrentEntryFile};

ExtractOptions withPassword(const std::u16string& password) {
    ExtractOptions options;
    options.password = password;
    return options;
}

}  // namespace

std::vector<std::u16string> extractArchive(const std::u16string& archivePath,
                                           const std::u16string& outputFolder,
                                           const std::u16string& format,
                                           const std::u16string& password) {
    AllEntries selection;
    return extractEntries(archivePath, outputFolder, format, withPassword(password), selection,
                          kAsExtractArchive);
}

std::vector<std::u16string> extractArchive(const std::u16string& archivePath,
                                           const std::u16string& outputFolder,
                                           const std::u16string& format,
                                           const std::vector<std::u16string>& entryNames,
                                           const std::u16string& password) {
    NamedEntrySelection selection(entryNames);
    return extractEntries(archivePath, outputFolder, format, withPassword(password), selection,
                          kAsExtractArchive);
}

}  // namespace tessel::io::archive::core
