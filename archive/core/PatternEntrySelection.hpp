#pragma once

#include <string>
#include <vector>

#include <archive/core/EntrySelection.hpp>

namespace tessel::io::archive::core {

// Selection by pattern, as users of tar and unzip expect: an entry is selected when a
// pattern equals its name, or one of the folders above it, or matches it as a shell
// wildcard (fnmatch: "*" also matches "/"); a trailing "/" on either side is ignored.
// An empty list selects everything. Every entry of a name is written, in archive order,
// so of two entries of one name the last is what stays, as tar leaves it.
class PatternEntrySelection final : public EntrySelection {
  public:
    explicit PatternEntrySelection(const std::vector<std::u16string>& patterns);

    bool wants(const std::u16string& storedName) override;

    // The patterns that selected no entry, as given.
    std::vector<std::u16string> unmatched() const;

  private:
    struct Pattern {
        std::u16string given;
        std::string text;  // UTF-8, without a trailing "/"
        bool matched = false;
    };
    std::vector<Pattern> patterns_;
};

}  // namespace tessel::io::archive::core
