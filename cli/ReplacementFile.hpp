#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>

namespace tqarchive {

// A file written whole: the content goes to a temporary file beside the target, which is
// renamed over the target only by commit, so a failure, a full disk or Ctrl-C leaves an
// earlier target as it was and no temporary behind. The temporary is made, renamed and
// removed relative to a descriptor of the target's folder, so a folder swapped for a link
// while the content is written cannot move any of it elsewhere.
class ReplacementFile {
  public:
    // openError: the identifier raised, with the target, when the temporary cannot be
    // created (say "TESSEL:io:archive:zip:openError").
    ReplacementFile(std::filesystem::path target, const std::string& openError);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    int descriptor() const noexcept { return descriptor_; }

    // The finished file takes the permission bits and modification time of source (what
    // gzip and gunzip do with their input) instead of the mode below.
    void takeAttributesOf(const struct stat& source);

    // Gives the file its mode (that of the regular file it replaces, else 0666 less the
    // umask: a mode is never widened), closes it and renames it over the target. Raises
    // "tqarchive:interrupted" instead when a signal came, and "tqarchive:replaceFailed"
    // when the file cannot be finished.
    void commit();

  private:
    std::filesystem::path target_;
    std::string name_;       // the target's name in its folder
    std::string temporary_;  // the temporary's name in the same folder
    int folder_ = -1;
    int descriptor_ = -1;
    std::optional<struct stat> source_;
    bool committed_ = false;
};

}  // namespace tqarchive
