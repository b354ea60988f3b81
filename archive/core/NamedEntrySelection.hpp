#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include <archive/core/EntrySelection.hpp>

namespace tessel::io::archive::core {

// The named subset of extractArchive: names compared exactly as stored, each distinct
// name written once (the first entry of that name wins), and reading stops as soon as
// every distinct name is written. Names no entry matches are ignored.
class NamedEntrySelection final : public EntrySelection {
  public:
    explicit NamedEntrySelection(const std::vector<std::u16string>& names);

    bool done() const override { return extracted_ >= wanted_.size(); }
    bool wants(const std::u16string& storedName) override;
    void taken(const std::u16string& storedName) override;

  private:
    std::unordered_map<std::u16string, bool> wanted_;  // name -> already written
    std::size_t extracted_ = 0;
};

}  // namespace tessel::io::archive::core
