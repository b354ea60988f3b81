#pragma once

#include <string>
#include <vector>

#include <archive/core/EntrySelection.hpp>
#include <archive/core/ExtractOptions.hpp>

namespace tessel::io::archive::core {

// How a failure leaves an extraction.
enum class ExtractionFailures {
    // As extractArchive: the entry in progress is removed and the failure translated by
    // extractArchive's table.
    AsExtractArchive,
    // As the additions: the options' cleanup, then their own translation.
    AsOptionsSay,
};

// The one entry loop of extraction, shared by extractArchive (both forms) and
// extractArchiveWithOptions: each selected entry is placed under the output folder,
// reviewed by the safe modes the options ask for, written, and its data copied. Returns
// the paths written.
std::vector<std::u16string> extractEntries(const std::u16string& archivePath,
                                           const std::u16string& outputFolder,
                                           const std::u16string& format,
                                           const ExtractOptions& options, EntrySelection& selection,
                                           ExtractionFailures failures);

}  // namespace tessel::io::archive::core
