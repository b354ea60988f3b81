#pragma once

#include <string>

#include <archive_entry.h>

#include <archive/core/ExtractOptions.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// The safe modes of extraction, applied to each entry as the writer is about to see it
// (its pathname already placed under the output folder): device files and FIFOs are
// skipped with a warning, set-ID, sticky and group/other write bits are cleared, and a
// symbolic link pointing outside the output folder is refused.
class EntrySafety {
  public:
    EntrySafety(const ExtractOptions& options, tessel::host::HostPath outputFolder);

    // false: skip the entry (warned). A link pointing out raises LinkOutsideFolder.
    bool review(::archive_entry* entry, const std::u16string& storedName) const;

  private:
    bool linkStaysInside(const std::string& linkPath, const std::string& target) const;

    bool skipSpecialFiles_;
    bool restrictPermissions_;
    bool refuseOutwardLinks_;
    std::string outputFolder_;  // access form, no trailing separator
};

}  // namespace tessel::io::archive::core
