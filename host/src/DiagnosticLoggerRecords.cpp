#include <host/DiagnosticLoggerRecords.hpp>

#include <boost/log/attributes/attribute_value_impl.hpp>

#include "DiagnosticLoggerState.hpp"
#include "LogSinks.hpp"

namespace tessel::host {

namespace {

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

boost::log::record DiagnosticLoggerRecords::open(DiagnosticLogger& logger, int severity) {
    DiagnosticLogger::State& state = *logger.state_;
    if (!state.core->get_logging_enabled()) {
        return boost::log::record();
    }
    WriteLock guard(state.lock);
    logger.lockCount_.fetch_add(1);
    DiagnosticLogger::State::openingSeverity = severity;
    forgetDiscardSinkAsked();
    boost::log::record record = state.core->open_record(state.attributes);
    if (!discardSinkAsked()) {
        // The host's discard sink is asked about every record while it is in the core: the
        // host removed it. With no sink left Boost.Log falls back to printing every record
        // on the console; with sinks of the host's own the file sink is gone too. Put the
        // host's sinks back and ask again, so that exactly the sinks that want the record
        // get it. (A core filter of the host's that refuses the record also keeps the
        // discard sink from being asked; then adding does nothing and the record is
        // refused again.)
        record.reset();
        reinstallHostSinks();
        record = state.core->open_record(state.attributes);
    }
    return record;
}

void DiagnosticLoggerRecords::push(DiagnosticLogger& logger, boost::log::record&& record,
                                   std::string message) {
    DiagnosticLogger::State& state = *logger.state_;
    record.attribute_values().insert(
        state.messageName, boost::log::attributes::make_attribute_value(std::move(message)));
    state.core->push_record(std::move(record));
}

}  // namespace tessel::host
