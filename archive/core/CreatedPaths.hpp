#pragma once

#include <string>
#include <unordered_set>
#include <vector>

namespace tessel::io::archive::core {

// What one extraction created, so that a failed call can take it back: files, links and
// folders it made, in the order made. Folders known to exist are remembered, so that
// most entries cost one query, and an entry in a folder this call made costs none: what
// is in such a folder was made by this call, and is remembered too.
class CreatedPaths {
  public:
    // Before an entry is written at path (access form): what of it is not there yet.
    struct Plan {
        std::vector<std::string> missingFolders;  // outermost first
        bool targetExists = false;
        bool targetIsFolder = false;
    };
    Plan plan(const std::string& path);

    // After the entry's header was written: remember what it made.
    void confirm(const std::string& path, const Plan& plan, bool isFolder);

    // Removes everything recorded, newest first; a folder only when empty. Never throws.
    void removeAll() noexcept;

  private:
    std::vector<std::string> created_;
    std::unordered_set<std::string> knownFolders_;
    std::unordered_set<std::string> createdFolders_;
    std::unordered_set<std::string> createdItems_;
};

}  // namespace tessel::io::archive::core
