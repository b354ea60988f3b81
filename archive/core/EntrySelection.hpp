#pragma once

#include <string>

namespace tessel::io::archive::core {

// Which entries of an archive an extraction writes, decided on the name as stored.
class EntrySelection {
  public:
    virtual ~EntrySelection() = default;
    // Whether to stop reading headers (checked after each header is read).
    virtual bool done() const { return false; }
    virtual bool wants(const std::u16string& storedName) = 0;
    // The entry was written.
    virtual void taken(const std::u16string& storedName) { (void)storedName; }
};

// Every entry.
class AllEntries final : public EntrySelection {
  public:
    bool wants(const std::u16string&) override { return true; }
};

}  // namespace tessel::io::archive::core
