#pragma once

#include <string>
#include <vector>

#include <archive/core/EntrySelection.hpp>
#include <archive/core/ExtractOptions.hpp>
#include <archive/core/error/ExtractFailures.hpp>

namespace tessel::io::archive::core {

// What a failed extraction takes back before its error is raised.
enum class ExtractCleanup {
    // After a failure of the archive objects, the file of the entry the writer is on goes,
    // even when that entry was complete; a failure to close it or an empty entry name
    // keeps it.
    CurrentEntryFile,
    // After any failure the entry in progress is given up (a replacement's temporary
    // removed, the file it was replacing left whole) and, with
    // ExtractOptions::removeCreatedOnFailure, everything the call created goes.
    AsOptionsSay,
};

// What an extraction does about a failure: whose identifiers it raises, and what it
// takes back first.
struct ExtractFailurePolicy {
    ExtractFailureTable table;
    ExtractCleanup cleanup;
};

// The one entry loop of extraction, behind extractArchive (both forms) and
// extractArchiveWithOptions: each selected entry is placed under the output folder,
// reviewed by the safe modes the options ask for, written, and its data copied. Returns
// the paths written; the names (as stored) of the entries left out with a warning go to
// skipped when given.
std::vector<std::u16string> extractEntries(const std::u16string& archivePath,
                                           const std::u16string& outputFolder,
                                           const std::u16string& format,
                                           const ExtractOptions& options, EntrySelection& selection,
                                           const ExtractFailurePolicy& failures,
                                           std::vector<std::u16string>* skipped = nullptr);

}  // namespace tessel::io::archive::core
