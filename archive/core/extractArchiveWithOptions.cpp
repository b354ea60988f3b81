#include <string>

#include <archive/core/PatternEntrySelection.hpp>
#include <archive/core/archivecore.hpp>
#include <archive/core/error/messages/extractArchive.hpp>
#include <archive/core/extractEntries.hpp>

namespace tessel::io::archive::core {

ExtractResult extractArchiveWithOptions(const std::u16string& archivePath,
                                        const std::u16string& outputFolder,
                                        const std::u16string& format,
                                        const ExtractOptions& options) {
    PatternEntrySelection selection(options.select);
    ExtractResult result;
    constexpr ExtractFailurePolicy kAsOptionCalls{ExtractFailureTable::OptionCalls,
                                                  ExtractCleanup::AsOptionsSay};
    result.written = extractEntries(archivePath, outputFolder, format, options, selection,
                                    kAsOptionCalls, &result.skipped);
    for (const std::u16string& pattern : selection.unmatched()) {
        result.notFound.push_back(
            TESSEL::io::archive::extractArchive::entryNotFound(pattern, archivePath));
    }
    return result;
}

}  // namespace tessel::io::archive::core
