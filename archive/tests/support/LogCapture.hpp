#pragma once

#include <mutex>
#include <string>
#include <vector>

#include <boost/log/sinks/sync_frontend.hpp>

namespace tqtest {

struct CapturedRecord {
    int severity = 0;
    std::string channel;
    std::string message;
};

// While alive, collects the records of the library's diagnostic channel through a real
// Boost.Log sink attached to the core.
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<CapturedRecord> records() const;
    std::vector<std::string> messages() const;
    // Whether some record's message starts with the text.
    bool contains(const std::string& prefix) const;

  private:
    struct Backend;
    boost::shared_ptr<boost::log::sinks::synchronous_sink<Backend>> sink_;
    boost::shared_ptr<Backend> backend_;
};

}  // namespace tqtest
