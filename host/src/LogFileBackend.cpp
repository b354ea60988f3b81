#include "LogFileBackend.hpp"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <system_error>

#include <boost/log/attributes/value_extraction.hpp>
#include <boost/log/expressions/message.hpp>

#include <host/MessageIdError.hpp>

#include "StandardError.hpp"

namespace tessel::host {

namespace {

// Local time with microseconds, e.g. "2024-05-01 13:45:07.123456".
void appendTimestamp(std::string& line) {
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
    line += text;
}

template <typename T>
T valueOf(const boost::log::record_view& record, const boost::log::attribute_name& name) {
    const auto found = record.attribute_values().find(name);
    if (found == record.attribute_values().end()) {
        return T();
    }
    const auto value = found->second.extract<T>();
    return value ? *value : T();
}

const char* fileKind(mode_t mode) {
    if (S_ISDIR(mode)) {
        return "a folder";
    }
    if (S_ISFIFO(mode)) {
        return "a pipe";
    }
    if (S_ISCHR(mode)) {
        return "a character device";
    }
    if (S_ISBLK(mode)) {
        return "a block device";
    }
    if (S_ISSOCK(mode)) {
        return "a socket";
    }
    return "a special file";
}

}  // namespace

LogFileBackend::LogFileBackend(int descriptor, std::string path)
    : descriptor_(descriptor),
      path_(std::move(path)),
      severity_("Severity"),
      channel_("Channel"),
      message_(boost::log::expressions::tag::message::get_name()) {}

LogFileBackend::~LogFileBackend() {
    ::close(descriptor_);
}

void LogFileBackend::consume(const boost::log::record_view& record) noexcept {
    try {
        std::string line;
        appendTimestamp(line);
        line += " [" + std::to_string(valueOf<int>(record, severity_)) + "] ";
        line += valueOf<std::string>(record, channel_);
        line += ": ";
        line += valueOf<std::string>(record, message_);
        line += '\n';
        // A regular file never raises SIGPIPE. Only a full disk or an interrupting signal
        // makes the write short; the rest is tried again until a write fails.
        std::string_view rest(line);
        while (!rest.empty()) {
            const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
            if (written < 0 && errno == EINTR) {
                continue;
            }
            if (written <= 0) {
                const int error = written < 0 ? errno : ENOSPC;
                if (!failureTold_.exchange(true)) {
                    writeNotice(MessageIdError("TESSEL:host", "logFileWriteFailed",
                                               {path_, std::generic_category().message(error)}));
                }
                break;
            }
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
    } catch (...) {
        // Out of memory while composing: the record is lost, the call goes on.
    }
}

int LogFileBackend::openLogFile(const char* path, std::string& problem) {
    // Anything but a regular file is refused before it is opened: opening a device can
    // have effects of its own.
    struct stat info {};
    if (::stat(path, &info) == 0 && !S_ISREG(info.st_mode)) {
        problem = std::string("is ") + fileKind(info.st_mode) + ", not a regular file";
        return -1;
    }
    int descriptor;
    do {
        descriptor =
            ::open(path, O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0666);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        problem = "cannot be opened (" + std::generic_category().message(errno) + ")";
        return -1;
    }
    // The name may have been replaced in between: what was opened is what counts.
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        problem = std::string("is ") + fileKind(info.st_mode) + ", not a regular file";
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

}  // namespace tessel::host
