#include "versionText.hpp"

#include <archive.h>

#include <archive/core/version.hpp>

namespace tqarchive {

std::string versionText() {
    // archive_version_details() rebuilds its static buffer on each call and drops the
    // previous one, so it is asked once.
    static const std::string text = "tqarchive " TQARCHIVECORE_VERSION_STRING "\n" +
                                    std::string(archive_version_details()) + '\n';
    return text;
}

}  // namespace tqarchive
