#include "versionText.hpp"

#include <archive.h>

#include <archive/core/version.hpp>

namespace tqarchive {

std::string versionText() {
    std::string text = "tqarchive " TQARCHIVECORE_VERSION_STRING "\n";
    text += archive_version_details();
    text += '\n';
    return text;
}

}  // namespace tqarchive
