#pragma once

#include <string>
#include <vector>

#include <archive/core/CreateOptions.hpp>

namespace tessel::io::archive::core {

// The one entry loop of archive creation, shared by both createArchive overloads and
// createArchiveWithOptions: each input is read from disk as one entry, written under
// its name, and its content copied. encrypt: use the password and encryption method of
// the options (what the six-argument overload does). withOptions: the options' filter,
// level, descriptor, progress, skipping and final close, and their failure translation.
std::vector<std::u16string> createEntries(const std::u16string& archivePath,
                                          const std::vector<std::u16string>& files,
                                          const std::vector<std::u16string>& entryNames,
                                          const std::u16string& format,
                                          const CreateOptions& options, bool withOptions);

}  // namespace tessel::io::archive::core
