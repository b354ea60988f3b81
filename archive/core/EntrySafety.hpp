#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <archive_entry.h>

#include <archive/core/ExtractOptions.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// The safe modes of extraction, applied to each entry as the writer is about to see it
// (its pathname already placed under the output folder): device files and FIFOs are
// skipped with a warning, set-ID, sticky and group/other write bits are cleared, and a
// symbolic link that would point outside the output folder from where it lands is
// skipped or refused as the options say.
class EntrySafety {
  public:
    EntrySafety(const ExtractOptions& options, tessel::host::HostPath outputFolder);

    // false: skip the entry (warned). With OutwardLinks::Refuse a link pointing out raises
    // LinkOutsideFolder.
    bool review(::archive_entry* entry, const std::u16string& storedName) const;

  private:
    // The target of the symbolic link the entry would leave at its place: its own for a
    // symbolic link, that of the symbolic link on disk a hard link would be a second name
    // of; nothing for any other entry.
    static std::optional<std::string> linkLeftBy(::archive_entry* entry);
    bool linkStaysInside(const std::string& linkPath, const std::string& target) const;
    bool resolvesInside(const std::string& linkPath, const std::string& target) const;

    bool skipSpecialFiles_;
    bool restrictPermissions_;
    OutwardLinks outwardLinks_;
    std::string outputFolder_;               // access form, no trailing separator
    std::filesystem::path canonicalFolder_;  // absolute, links on disk resolved
};

}  // namespace tessel::io::archive::core
