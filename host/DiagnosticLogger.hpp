#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace tessel::host {

class DiagnosticLoggerRecords;

// A logger bound to one named channel of the host's logging service (Boost.Log).
// Holds the core, its attribute set (with the channel), a read-write lock taken only
// while a record is opened, and the mask of enabled severities. Records are opened and
// pushed through DiagnosticLoggerRecords; an embedder that wants them attaches a
// Boost.Log sink of its own, filtering with the attributes of host/LogAttributes.hpp.
//
// The first logger created in a process configures the host's sinks from the
// environment: TQARCHIVE_LOG=FILE appends records to FILE (a regular file, one line each,
// written record by record); without it records are discarded silently.
// TQARCHIVE_LOG_LEVELS, a comma-separated list of 1, 4 and 512, sets the mask of every
// logger (default: all). A value that cannot be used gets one notice on standard error.
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

    // How many times the lock was taken (a test hook for "the lock is never taken").
    std::uint64_t lockCount() const noexcept { return lockCount_.load(); }

  private:
    friend class DiagnosticLoggerRecords;
    struct State;

    std::string channel_;
    std::unique_ptr<State> state_;
    std::atomic<std::uint32_t> mask_;
    std::atomic<std::uint64_t> lockCount_{0};
};

}  // namespace tessel::host
