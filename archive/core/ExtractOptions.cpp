#include <archive/core/ExtractOptions.hpp>

namespace tessel::io::archive::core {

ExtractOptions ExtractOptions::safe() {
    ExtractOptions options;
    options.confine = true;
    options.skipSpecialFiles = true;
    options.restrictPermissions = true;
    options.outwardLinks = OutwardLinks::Skip;
    options.safeWrites = true;
    options.removeCreatedOnFailure = true;
    return options;
}

ExtractOptions ExtractOptions::unsafe() {
    ExtractOptions options = safe();
    options.confine = false;
    options.skipSpecialFiles = false;
    options.restrictPermissions = false;
    options.outwardLinks = OutwardLinks::Keep;
    return options;
}

}  // namespace tessel::io::archive::core
