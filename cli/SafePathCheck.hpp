#pragma once

#include <set>
#include <string>
#include <vector>

struct archive;
struct archive_entry;

namespace tqarchive {

// Reads an archive's entry headers (data skipped) and refuses, with
// "tqarchive:unsafeEntryPath", an archive holding an entry that would be written outside
// the output folder: a ".." component, a hard link to an absolute name or through "..",
// an entry at or beneath a symbolic link that an earlier entry of the archive creates, or
// any hard link when the output folder is not the current folder: extraction re-roots an
// entry's own name under the output folder but not its hard link target, which is then
// resolved from the current folder. Absolute names are safe: they are re-rooted.
//
// An archive this pass cannot open or read to its end is left to the extraction, which
// stops at the same place with its own error.
class SafePathCheck {
  public:
    // format: the read configuration the extraction uses ("zip", "tgz", or anything else
    // for every format and filter). password: registered for zip when not empty.
    static void verify(const std::string& archivePath, const std::string& format,
                       const std::string& password, bool outputIsCurrentFolder);

  private:
    SafePathCheck(std::string archivePath, bool outputIsCurrentFolder)
        : archivePath_(std::move(archivePath)), outputIsCurrentFolder_(outputIsCurrentFolder) {}

    void check(archive_entry* entry);
    [[noreturn]] void refuse(const std::string& entryName, const std::string& reason) const;

    std::string archivePath_;
    bool outputIsCurrentFolder_;
    // Normalised names ("a/b") of the symbolic links that earlier entries create.
    std::set<std::string> links_;
};

}  // namespace tqarchive
