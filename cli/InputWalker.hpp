#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tqarchive {

// One file or folder to pack: where it is on disk and the name it gets, relative to the
// base it was added under, "/"-separated, folders ending in "/".
struct WalkedInput {
    std::filesystem::path diskPath;
    std::string name;
    bool folder = false;
    bool nested = false;     // found beneath a folder input rather than named as an input
    std::uint64_t size = 0;  // bytes, for a file
};

// Expands inputs into the files and folders beneath them, depth first, each folder's
// children in sorted order. Symbolic links are followed, as the archive reader follows
// them; a link leading back into a folder that contains it is reported and left out, as
// are broken links and special files (pipes, sockets, devices), which would block or
// fail the whole run. A path reached twice is listed once. A file or folder matching an
// exclusion pattern is left out, a folder with everything beneath it.
class InputWalker {
  public:
    // A file never to be listed (the archive being written), when it exists.
    void exclude(const std::filesystem::path& file);
    // Shell patterns matched as tar's --exclude matches them: against the name relative to
    // the base (without a folder's "/") and against the last component, "*" matching "/".
    void excludePatterns(std::vector<std::string> patterns) { patterns_ = std::move(patterns); }
    // Leave out, with a warning, every symbolic link found beneath a folder input (links
    // named as inputs are still followed): what gzip and gunzip do, so that an output
    // written beside its input can never land outside the folder through a link.
    void skipLinksBeneathFolders() { skipNestedLinks_ = true; }

    // Adds an input named relative to base (an absolute, lexically normal folder). An
    // input outside base raises "tqarchive:inputOutsideRoot"; a missing one
    // "tqarchive:inputNotFound".
    void add(const std::filesystem::path& input, const std::filesystem::path& base);

    const std::vector<WalkedInput>& inputs() const noexcept { return inputs_; }

    // The absolute, lexically normal form of a path (against the current folder).
    static std::filesystem::path normal(const std::filesystem::path& path);

  private:
    using FileId = std::pair<dev_t, ino_t>;

    // normalPath: normal(diskPath), carried down the walk rather than made again.
    void visit(const std::filesystem::path& diskPath, const std::string& normalPath,
               const std::string& name, std::vector<FileId>& ancestors, bool nested);
    // False when the path was listed before.
    bool emit(const std::filesystem::path& diskPath, const std::string& normalPath,
              std::string name, bool folder, bool nested, std::uint64_t size);
    bool excluded(const std::string& name) const;

    std::vector<WalkedInput> inputs_;
    std::unordered_set<std::string> seen_;  // normal forms of the paths listed
    std::set<FileId> excluded_;
    std::vector<std::string> patterns_;
    bool skipNestedLinks_ = false;
};

}  // namespace tqarchive
