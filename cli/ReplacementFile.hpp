#pragma once

#include <filesystem>
#include <string>

namespace tqarchive {

// A file written whole: the content goes to a temporary file beside the target, which is
// renamed over the target only by commit, so a failure, a full disk or Ctrl-C leaves an
// earlier target as it was and no temporary behind.
class ReplacementFile {
  public:
    // openError: the identifier raised, with the target, when the temporary cannot be
    // created (say "TESSEL:io:archive:zip:openError").
    ReplacementFile(std::filesystem::path target, const std::string& openError);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    int descriptor() const noexcept { return descriptor_; }

    // Gives the file the mode a new file gets (0666 less the umask), closes it and renames
    // it over the target. Raises "tqarchive:interrupted" instead when a signal came, and
    // "tqarchive:replaceFailed" when the file cannot be finished.
    void commit();

  private:
    std::filesystem::path target_;
    std::filesystem::path temporary_;
    int descriptor_ = -1;
    bool committed_ = false;
};

}  // namespace tqarchive
