#include <iostream>

#include <host/TextConversion.hpp>

#include "Commands.hpp"

namespace tqarchive {

void printNames(const std::vector<std::u16string>& names, bool quiet) {
    if (quiet) {
        return;
    }
    for (const std::u16string& name : names) {
        std::cout << tessel::host::toDisplayText(name) << '\n';
    }
    std::cout.flush();
}

}  // namespace tqarchive
