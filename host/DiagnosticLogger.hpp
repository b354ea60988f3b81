#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <string>

#include <boost/log/attributes/attribute_set.hpp>
#include <boost/log/core/core.hpp>
#include <boost/log/core/record.hpp>
#include <boost/log/expressions/keyword.hpp>

namespace tessel::host {

// Attribute names carried by every record of a diagnostic channel; an embedder's
// sink filters and formats with them.
BOOST_LOG_ATTRIBUTE_KEYWORD(logChannel, "Channel", std::string)
BOOST_LOG_ATTRIBUTE_KEYWORD(logSeverity, "Severity", int)

// A logger bound to one named channel of the host's logging service (Boost.Log).
// Holds the core, its attribute set (with the channel), a read-write lock taken only
// while a record is opened, and the mask of enabled severities.
//
// The first logger created in a process configures the host's sinks from the
// environment: TQARCHIVE_LOG=FILE sends records to FILE (one line each, flushed record
// by record); without it records are discarded silently. TQARCHIVE_LOG_LEVELS, a
// comma-separated subset of 1,4,512, sets the mask of every logger (default: all).
class DiagnosticLogger {
  public:
    static constexpr std::uint32_t AllLevels = 1u | 4u | 512u;

    explicit DiagnosticLogger(std::string channel);
    ~DiagnosticLogger();
    DiagnosticLogger(const DiagnosticLogger&) = delete;
    DiagnosticLogger& operator=(const DiagnosticLogger&) = delete;

    const std::string& channel() const noexcept { return channel_; }
    bool enabled(std::uint32_t level) const noexcept {
        return (mask_.load(std::memory_order_relaxed) & level) != 0;
    }
    std::uint32_t mask() const noexcept { return mask_.load(std::memory_order_relaxed); }
    void setMask(std::uint32_t mask) noexcept { mask_.store(mask, std::memory_order_relaxed); }

    // Opens a record at the severity: empty when the core is disabled or no sink wants it.
    boost::log::record openRecord(int severity);
    // Hands a composed record to the core.
    void pushRecord(boost::log::record&& record);

    // How many times the lock was taken (a test hook for "the lock is never taken").
    std::uint64_t lockCount() const noexcept { return lockCount_.load(); }

  private:
    std::string channel_;
    boost::shared_ptr<boost::log::core> core_;
    boost::log::attribute_set attributes_;
    pthread_rwlock_t lock_;
    std::atomic<std::uint32_t> mask_;
    std::atomic<std::uint64_t> lockCount_{0};
};

// Parses a TQARCHIVE_LOG_LEVELS value ("1,4,512"); unknown items are ignored; an empty
// or absent value gives every level.
std::uint32_t parseLogLevels(const char* text);

// Sends every diagnostic channel to the file as well (what TQARCHIVE_LOG does).
void addLogFileSink(const std::string& path);

}  // namespace tessel::host
