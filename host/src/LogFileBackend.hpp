#pragma once

#include <atomic>
#include <string>

#include <boost/log/attributes/attribute_name.hpp>
#include <boost/log/core/record_view.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>

namespace tessel::host {

// Writes each record to the log file as one line,
// "<local time with microseconds> [<severity>] <channel>: <message>", with one write(2),
// so that lines written by many threads at once stay whole. A write that fails (a full
// disk) loses that record and nothing else: logging never changes a call's outcome. The
// first failure is told once on standard error.
class LogFileBackend
    : public boost::log::sinks::basic_sink_backend<boost::log::sinks::concurrent_feeding> {
  public:
    // Takes over the descriptor, a regular file opened for appending from the path.
    LogFileBackend(int descriptor, std::string path);
    ~LogFileBackend();
    LogFileBackend(const LogFileBackend&) = delete;
    LogFileBackend& operator=(const LogFileBackend&) = delete;

    void consume(const boost::log::record_view& record) noexcept;

    // Opens the file for appending, creating it when missing; only a regular file is
    // accepted. Never blocks: a FIFO without a reader, a device or a terminal is refused,
    // not waited for. Returns the descriptor, or -1 with the reason in `problem`.
    static int openLogFile(const char* path, std::string& problem);

  private:
    int descriptor_;
    std::string path_;
    std::atomic<bool> failureTold_{false};
    // Looked up once: Boost.Log's name registry is gone during static destruction.
    boost::log::attribute_name severity_;
    boost::log::attribute_name channel_;
    boost::log::attribute_name message_;
};

}  // namespace tessel::host
