#pragma once

#include <sys/types.h>

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tessel::io::archive::core {

// What one extraction created, so that a failed call can take it back: files, links and
// folders it made, each with the device and inode it had when made, kept per folder.
// Folders known to exist are remembered, so that most entries cost one query, and an
// entry in a folder this call made costs none: what is in such a folder was made by this
// call, and is remembered too. Taking back never goes by a path that may have changed:
// it walks down folder by folder from descriptors, and removes only what is still the
// object this call made.
class CreatedPaths {
  public:
    struct Identity {
        dev_t device = 0;
        ino_t inode = 0;
    };

    // Before an entry is written at path (access form): what of it is not there yet.
    struct Plan {
        std::vector<std::string> missingFolders;  // outermost first
        bool targetExists = false;
        bool targetIsFolder = false;
        Identity target;  // when it exists
        // A file found where a folder of the path must go (the writer replaces it by a
        // folder, unless existing files are kept); empty when there is none.
        std::string fileInTheWay;
    };

    CreatedPaths() = default;
    ~CreatedPaths();
    CreatedPaths(const CreatedPaths&) = delete;
    CreatedPaths& operator=(const CreatedPaths&) = delete;

    Plan plan(const std::string& path);

    // After the entry's header was written: remember what it made. settlesLater: the object
    // made now is replaced when the entry is finished (a file written to a temporary), and
    // is looked at again then.
    void confirm(const std::string& path, const Plan& plan, bool isFolder,
                 bool settlesLater = false);

    // Removes everything recorded, folders deepest first and each only when empty. Never
    // throws.
    void removeAll() noexcept;

  private:
    struct Made {
        Identity identity;
        bool isFolder = false;
        // A folder that replaced a file the caller had: what the call put in it is taken
        // back, the folder stays, as any replaced file stays replaced.
        bool kept = false;
    };
    struct Folder {
        std::string path;
        // Unknown only for the folder relative paths start from, held open instead.
        std::optional<Identity> identity;
        bool created = false;
        // A link to a folder that was there before: the caller's own, so opened through.
        bool followed = false;
        std::unordered_map<std::string, Made> made;
    };

    Folder& folder(const std::string& path);
    void remember(const std::string& path, const Identity& identity, bool created, bool followed);
    void recordMade(const std::string& path);
    bool madeByThisCall(const std::string& path) const;
    // recordMade, for a folder that replaced a file: kept unless the file was this call's.
    void recordReplacingFolder(const std::string& path);
    void settle();
    int openFolder(const std::string& path) const;
    void removeMadeIn(const Folder& folder) const;

    // Stable addresses: the index refers to the paths they hold.
    std::deque<Folder> folders_;
    std::unordered_map<std::string_view, std::size_t> index_;
    // Made by an entry that was not finished when recorded.
    std::vector<std::string> unsettled_;
    // The folder relative paths were taken from when the first entry came.
    int start_ = -1;
    // Off once a folder this call made was replaced: paths beneath it may lead elsewhere
    // now, so every entry is looked up again.
    bool trustCreated_ = true;
};

}  // namespace tessel::io::archive::core
