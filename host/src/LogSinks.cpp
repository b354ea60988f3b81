#include "LogSinks.hpp"

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include <boost/log/core/core.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/unlocked_frontend.hpp>
#include <boost/make_shared.hpp>

#include <host/DiagnosticLogger.hpp>
#include <host/MessageIdError.hpp>

#include "LogFileBackend.hpp"
#include "StandardError.hpp"

namespace tessel::host {

namespace logging = boost::log;
namespace sinks = boost::log::sinks;

namespace {

thread_local bool discardAsked = false;

class DiscardBackend : public sinks::basic_sink_backend<sinks::concurrent_feeding> {
  public:
    void consume(const logging::record_view&) {}
};

struct HostSinks {
    boost::shared_ptr<logging::core> core;
    boost::shared_ptr<sinks::sink> discard;
    boost::shared_ptr<sinks::sink> file;  // none without a usable TQARCHIVE_LOG
    std::uint32_t levels = DiagnosticLogger::AllLevels;
};

// A list of 1, 4 and 512 separated by commas, each with optional spaces around it, and
// nothing else.
std::optional<std::uint32_t> parseLogLevels(std::string_view text) {
    std::uint32_t mask = 0;
    while (true) {
        const std::size_t comma = text.find(',');
        std::string_view item = text.substr(0, comma);
        while (!item.empty() && item.front() == ' ') {
            item.remove_prefix(1);
        }
        while (!item.empty() && item.back() == ' ') {
            item.remove_suffix(1);
        }
        if (item == "1") {
            mask |= 1u;
        } else if (item == "4") {
            mask |= 4u;
        } else if (item == "512") {
            mask |= 512u;
        } else {
            return std::nullopt;
        }
        if (comma == std::string_view::npos) {
            return mask;
        }
        text.remove_prefix(comma + 1);
    }
}

HostSinks& hostSinks();

HostSinks* createHostSinks() {
    auto* host = new HostSinks;
    host->core = logging::core::get();

    auto discard = boost::make_shared<sinks::unlocked_sink<DiscardBackend>>();
    discard->set_filter([](const logging::attribute_value_set&) {
        discardAsked = true;
        return false;
    });
    host->discard = discard;

    if (const char* path = std::getenv("TQARCHIVE_LOG"); path != nullptr && *path != '\0') {
        std::string problem;
        if (const int descriptor = LogFileBackend::openLogFile(path, problem); descriptor >= 0) {
            auto file = boost::make_shared<sinks::unlocked_sink<LogFileBackend>>(
                boost::make_shared<LogFileBackend>(descriptor, path));
            // Every diagnostic channel, and nothing else.
            const logging::attribute_name channel("Channel");
            file->set_filter([channel](const logging::attribute_value_set& values) {
                return values.find(channel) != values.end();
            });
            host->file = file;
        } else {
            writeNotice(MessageIdError("TESSEL:host", "logFileUnusable",
                                       {std::string(path), std::move(problem)}));
        }
    }

    if (const char* levels = std::getenv("TQARCHIVE_LOG_LEVELS");
        levels != nullptr && *levels != '\0') {
        if (const auto mask = parseLogLevels(levels)) {
            host->levels = *mask;
        } else {
            writeNotice(MessageIdError("TESSEL:host", "logLevelsInvalid", {std::string(levels)}));
        }
    }

    // Holding the core keeps the sinks alive to the end, so an embedder's buffered sink
    // would never be written out: flush every sink while the process exits, as the
    // core's own destruction would have.
    std::atexit([] { hostSinks().core->flush(); });
    return host;
}

HostSinks& hostSinks() {
    // Never destroyed: calls made from atexit handlers and static destructors still log.
    static HostSinks* const host = createHostSinks();
    return *host;
}

}  // namespace

std::uint32_t installHostSinksOnce() {
    static const std::uint32_t levels = [] {
        reinstallHostSinks();
        return hostSinks().levels;
    }();
    return levels;
}

void reinstallHostSinks() {
    HostSinks& host = hostSinks();
    host.core->add_sink(host.discard);
    if (host.file) {
        host.core->add_sink(host.file);
    }
}

void forgetDiscardSinkAsked() noexcept {
    discardAsked = false;
}

bool discardSinkAsked() noexcept {
    return discardAsked;
}

}  // namespace tessel::host
