#include <archive/core/NamedEntrySelection.hpp>

namespace tessel::io::archive::core {

NamedEntrySelection::NamedEntrySelection(const std::vector<std::u16string>& names) {
    for (const std::u16string& name : names) {
        wanted_.emplace(name, false);
    }
}

bool NamedEntrySelection::wants(const std::u16string& storedName) {
    const auto found = wanted_.find(storedName);
    return found != wanted_.end() && !found->second;
}

void NamedEntrySelection::taken(const std::u16string& storedName) {
    const auto found = wanted_.find(storedName);
    if (found != wanted_.end() && !found->second) {
        found->second = true;
        ++extracted_;
    }
}

}  // namespace tessel::io::archive::core
