#pragma once

#include <string>

#include <boost/log/core/record.hpp>

#include <host/DiagnosticLogger.hpp>

namespace tessel::host {

// The Boost.Log side of a DiagnosticLogger, for the code that writes records (the
// library's log statements), not for embedders.
class DiagnosticLoggerRecords {
  public:
    // Opens a record at the severity: empty when the core is disabled or no sink wants it.
    // A host that removed the host's sinks gets them back first, so that Boost.Log's
    // console fallback never prints the channel.
    static boost::log::record open(DiagnosticLogger& logger, int severity);
    // Attaches the composed text as the record's message and hands it to the core.
    static void push(DiagnosticLogger& logger, boost::log::record&& record, std::string message);
};

}  // namespace tessel::host
