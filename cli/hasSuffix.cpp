#include <algorithm>
#include <cctype>

#include "Commands.hpp"

namespace tqarchive {

bool hasSuffix(std::string name, const std::string& suffix) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name.ends_with(suffix);
}

}  // namespace tqarchive
