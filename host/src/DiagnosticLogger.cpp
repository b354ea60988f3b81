#include <host/DiagnosticLogger.hpp>

#include <boost/log/attributes/constant.hpp>
#include <boost/log/attributes/function.hpp>
#include <boost/log/expressions/message.hpp>

#include "DiagnosticLoggerState.hpp"
#include "LogSinks.hpp"

namespace tessel::host {

thread_local int DiagnosticLogger::State::openingSeverity = 0;

DiagnosticLogger::State::State(const std::string& channel)
    : core(boost::log::core::get()),
      messageName(boost::log::expressions::tag::message::get_name()) {
    attributes.insert("Channel", boost::log::attributes::constant<std::string>(channel));
    attributes.insert("Severity",
                      boost::log::attributes::make_function([] { return openingSeverity; }));
    pthread_rwlock_init(&lock, nullptr);
}

DiagnosticLogger::State::~State() {
    pthread_rwlock_destroy(&lock);
}

DiagnosticLogger::DiagnosticLogger(std::string channel)
    : channel_(std::move(channel)),
      state_(std::make_unique<State>(channel_)),
      mask_(installHostSinksOnce()) {}

DiagnosticLogger::~DiagnosticLogger() = default;

}  // namespace tessel::host
