#include <archive/core/PatternEntrySelection.hpp>

#include <fnmatch.h>

#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

std::string withoutTrailingSlashes(std::string text) {
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

bool matches(const std::string& pattern, const std::string& name) {
    return pattern == name || fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

}  // namespace

PatternEntrySelection::PatternEntrySelection(const std::vector<std::u16string>& patterns) {
    for (const std::u16string& pattern : patterns) {
        patterns_.push_back({pattern, withoutTrailingSlashes(tessel::host::toUtf8(pattern))});
    }
}

bool PatternEntrySelection::wants(const std::u16string& storedName) {
    if (patterns_.empty()) {
        return true;
    }
    const std::string name = withoutTrailingSlashes(tessel::host::toUtf8(storedName));
    bool wanted = false;
    for (Pattern& pattern : patterns_) {
        // The name itself, then each folder above it: "a/b/c" is wanted by "a/b" and "a".
        for (std::size_t end = name.size(); end != std::string::npos && end > 0;
             end = name.rfind('/', end - 1)) {
            if (matches(pattern.text, name.substr(0, end))) {
                pattern.matched = true;
                wanted = true;
                break;
            }
        }
    }
    return wanted;
}

std::vector<std::u16string> PatternEntrySelection::unmatched() const {
    std::vector<std::u16string> names;
    for (const Pattern& pattern : patterns_) {
        if (!pattern.matched) {
            names.push_back(pattern.given);
        }
    }
    return names;
}

}  // namespace tessel::io::archive::core
