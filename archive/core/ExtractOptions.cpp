#include <archive/core/ExtractOptions.hpp>

namespace tessel::io::archive::core {

ExtractOptions ExtractOptions::safe() {
    ExtractOptions options;
    options.confine = true;
    options.skipSpecialFiles = true;
    options.restrictPermissions = true;
    options.refuseOutwardLinks = true;
    options.safeWrites = true;
    options.removeCreatedOnFailure = true;
    return options;
}

ExtractOptions ExtractOptions::unsafe() {
    // What safe() keeps when the paths are trusted: safe writes and the cleanup.
    ExtractOptions options = safe();
    options.confine = false;
    options.skipSpecialFiles = false;
    options.restrictPermissions = false;
    options.refuseOutwardLinks = false;
    return options;
}

}  // namespace tessel::io::archive::core
