#pragma once

#include <pthread.h>

#include <string>

#include <boost/log/attributes/attribute_name.hpp>
#include <boost/log/attributes/attribute_set.hpp>
#include <boost/log/core/core.hpp>

#include <host/DiagnosticLogger.hpp>

namespace tessel::host {

// What a logger holds of Boost.Log. Everything a record needs is looked up here once:
// Boost.Log's own registries are function-local statics, gone during static destruction,
// while a call made from an atexit handler must still log.
struct DiagnosticLogger::State {
    explicit State(const std::string& channel);
    ~State();
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // The severity of the record being opened on the calling thread; the "Severity"
    // attribute reads it while the core opens the record, so concurrent loggers never see
    // each other's value.
    static thread_local int openingSeverity;

    boost::shared_ptr<boost::log::core> core;
    boost::log::attribute_set attributes;
    boost::log::attribute_name messageName;
    pthread_rwlock_t lock;
};

}  // namespace tessel::host
