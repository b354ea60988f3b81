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

}  // namespace tessel::io::archive::core
