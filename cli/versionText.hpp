#pragma once

#include <string>

namespace tqarchive {

// What --version prints: the program's version (the library's, as built against), then
// libarchive's with the versions of the codecs it was built with; a line each.
std::string versionText();

}  // namespace tqarchive
