#include "LogCapture.hpp"

#include <boost/log/core/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>

#include <archive/core/log/diagnosticLogger.hpp>
#include <host/LogAttributes.hpp>

namespace tqtest {

struct LogCapture::Backend
    : boost::log::sinks::basic_sink_backend<boost::log::sinks::synchronized_feeding> {
    void consume(const boost::log::record_view& record) {
        CapturedRecord captured;
        if (auto severity = record[tessel::host::logSeverity]) {
            captured.severity = *severity;
        }
        if (auto channel = record[tessel::host::logChannel]) {
            captured.channel = *channel;
        }
        if (auto message = record[boost::log::expressions::smessage]) {
            captured.message = *message;
        }
        std::lock_guard lock(mutex);
        records.push_back(std::move(captured));
    }

    mutable std::mutex mutex;
    std::vector<CapturedRecord> records;
};

LogCapture::LogCapture() : backend_(boost::make_shared<Backend>()) {
    // Make sure the library's logger (and the host's default sinks) exist first.
    tessel::io::archive::core::diagnosticLogger();
    sink_ = boost::make_shared<boost::log::sinks::synchronous_sink<Backend>>(backend_);
    sink_->set_filter(tessel::host::logChannel ==
                      std::string(tessel::io::archive::core::kDiagnosticChannel));
    boost::log::core::get()->add_sink(sink_);
}

LogCapture::~LogCapture() {
    boost::log::core::get()->remove_sink(sink_);
}

std::vector<CapturedRecord> LogCapture::records() const {
    std::lock_guard lock(backend_->mutex);
    return backend_->records;
}

std::vector<std::string> LogCapture::messages() const {
    std::vector<std::string> result;
    for (const auto& record : records()) {
        result.push_back(record.message);
    }
    return result;
}

bool LogCapture::contains(const std::string& prefix) const {
    for (const auto& record : records()) {
        if (record.message.rfind(prefix, 0) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace tqtest
