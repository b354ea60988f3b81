#pragma once

#include <string>
#include <vector>

#include <archive/core/CreateOptions.hpp>
#include <archive/core/error/CreateFailures.hpp>
#include <archive/core/objects/ArchiveCreator.hpp>

namespace tessel::io::archive::core {

// What a creation does about what goes wrong: whose identifiers a failure is raised
// under, and which warnings about an entry header reach the user.
struct CreateFailurePolicy {
    CreateFailureTable table;
    ArchiveCreator::HeaderWarnings headerWarnings;
};

// The one entry loop of archive creation, behind both createArchive overloads and
// createArchiveWithOptions: each input is read from disk as one entry, written under its
// name, and its content copied, as the options say. The partial archive of a failed call
// is kept.
std::vector<std::u16string> createEntries(const std::u16string& archivePath,
                                          const std::vector<std::u16string>& files,
                                          const std::vector<std::u16string>& entryNames,
                                          const std::u16string& format,
                                          const CreateOptions& options,
                                          const CreateFailurePolicy& failures);

}  // namespace tessel::io::archive::core
