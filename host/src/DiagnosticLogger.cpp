#include <host/DiagnosticLogger.hpp>

#include <cstdlib>
#include <string_view>

#include <boost/log/attributes/constant.hpp>
#include <boost/log/attributes/function.hpp>

#include "LogSinks.hpp"

namespace tessel::host {

namespace {

// The severity of the record being opened on this thread; the "Severity" attribute reads
// it while the core opens the record, so concurrent loggers never see each other's value.
thread_local int openingSeverity = 0;

class WriteLock {
  public:
    explicit WriteLock(pthread_rwlock_t& lock) : lock_(lock) { pthread_rwlock_wrlock(&lock_); }
    ~WriteLock() { pthread_rwlock_unlock(&lock_); }
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

  private:
    pthread_rwlock_t& lock_;
};

}  // namespace

std::uint32_t parseLogLevels(const char* text) {
    if (text == nullptr || *text == '\0') {
        return DiagnosticLogger::AllLevels;
    }
    std::uint32_t mask = 0;
    std::string_view rest(text);
    while (!rest.empty()) {
        const std::size_t comma = rest.find(',');
        std::string_view item = rest.substr(0, comma);
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
        while (!item.empty() && item.front() == ' ') {
            item.remove_prefix(1);
        }
        while (!item.empty() && item.back() == ' ') {
            item.remove_suffix(1);
        }
        for (const std::uint32_t level : {1u, 4u, 512u}) {
            if (item == std::to_string(level)) {
                mask |= level;
            }
        }
    }
    return mask;
}

DiagnosticLogger::DiagnosticLogger(std::string channel)
    : channel_(std::move(channel)),
      core_(boost::log::core::get()),
      mask_(parseLogLevels(std::getenv("TQARCHIVE_LOG_LEVELS"))) {
    installHostSinksOnce();
    attributes_.insert("Channel", boost::log::attributes::constant<std::string>(channel_));
    attributes_.insert("Severity",
                       boost::log::attributes::make_function([] { return openingSeverity; }));
    pthread_rwlock_init(&lock_, nullptr);
}

DiagnosticLogger::~DiagnosticLogger() {
    pthread_rwlock_destroy(&lock_);
}

boost::log::record DiagnosticLogger::openRecord(int severity) {
    if (!core_->get_logging_enabled()) {
        return boost::log::record();
    }
    WriteLock guard(lock_);
    lockCount_.fetch_add(1);
    openingSeverity = severity;
    return core_->open_record(attributes_);
}

void DiagnosticLogger::pushRecord(boost::log::record&& record) {
    core_->push_record(std::move(record));
}

}  // namespace tessel::host
