#include "versionText.hpp"

#include <archive.h>

// The generated version header, once the build makes one; the project version before.
#if __has_include(<archive/core/version.hpp>)
#include <archive/core/version.hpp>
#else
#define TQARCHIVECORE_VERSION_STRING TQ_VERSION
#endif

namespace tqarchive {

std::string versionText() {
    std::string text = "tqarchive " TQARCHIVECORE_VERSION_STRING "\n";
    text += archive_version_details();
    text += '\n';
    return text;
}

}  // namespace tqarchive
