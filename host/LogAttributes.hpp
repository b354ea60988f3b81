#pragma once

#include <string>

#include <boost/log/expressions/keyword.hpp>

namespace tessel::host {

// Attribute names carried by every record of a diagnostic channel; an embedder's
// Boost.Log sink filters and formats with them, e.g.
//   sink->set_filter(logChannel == "tessel::io::archive::core" && logSeverity >= 4);
BOOST_LOG_ATTRIBUTE_KEYWORD(logChannel, "Channel", std::string)
BOOST_LOG_ATTRIBUTE_KEYWORD(logSeverity, "Severity", int)

}  // namespace tessel::host
