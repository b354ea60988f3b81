#include "LogSinks.hpp"

#include <time.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>

#include <boost/log/core/core.hpp>
#include <boost/log/expressions/message.hpp>
#include <boost/log/expressions/predicates/has_attr.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_ostream_backend.hpp>
#include <boost/log/sinks/unlocked_frontend.hpp>
#include <boost/log/utility/exception_handler.hpp>
#include <boost/make_shared.hpp>

#include <host/DiagnosticLogger.hpp>

namespace tessel::host {

namespace logging = boost::log;
namespace sinks = boost::log::sinks;

namespace {

class DiscardBackend : public sinks::basic_sink_backend<sinks::concurrent_feeding> {
  public:
    void consume(const logging::record_view&) {}
};

// Local time with microseconds, e.g. "2024-05-01 13:45:07.123456".
void writeTimestamp(logging::formatting_ostream& out) {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto micros =
        std::chrono::duration_cast<std::chrono::microseconds>(now.time_since_epoch()).count() %
        1000000;
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[40];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    std::snprintf(text + length, sizeof text - length, ".%06lld", static_cast<long long>(micros));
    out << text;
}

void formatLine(const logging::record_view& record, logging::formatting_ostream& out) {
    writeTimestamp(out);
    out << " [" << record[logSeverity] << "] " << record[logChannel] << ": "
        << record[logging::expressions::smessage];
}

}  // namespace

void addLogFileSink(const std::string& path) {
    auto backend = boost::make_shared<sinks::text_ostream_backend>();
    backend->add_stream(boost::make_shared<std::ofstream>(path, std::ios::out | std::ios::app));
    // A line on disk per record as it happens, so a crash loses nothing.
    backend->auto_flush(true);
    auto sink = boost::make_shared<sinks::synchronous_sink<sinks::text_ostream_backend>>(backend);
    sink->set_filter(logging::expressions::has_attr(logChannel));
    sink->set_formatter(&formatLine);
    // Diagnostics must never change the outcome of an operation: a log file that cannot
    // be written loses its records instead of failing the caller.
    sink->set_exception_handler(logging::make_exception_suppressor());
    logging::core::get()->add_sink(sink);
}

void installHostSinksOnce() {
    static std::once_flag once;
    std::call_once(once, [] {
        auto silent = boost::make_shared<sinks::unlocked_sink<DiscardBackend>>();
        silent->set_filter([](const logging::attribute_value_set&) { return false; });
        logging::core::get()->add_sink(silent);
        if (const char* file = std::getenv("TQARCHIVE_LOG"); file != nullptr && *file != '\0') {
            addLogFileSink(file);
        }
    });
}

}  // namespace tessel::host
