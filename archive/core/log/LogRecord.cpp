#include <archive/core/log/LogRecord.hpp>

#include <exception>
#include <ios>
#include <string>
#include <utility>

#include <host/DiagnosticLoggerRecords.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

LogRecord::LogRecord(tessel::host::DiagnosticLogger& logger, std::uint32_t level)
    : logger_(logger),
      record_(tessel::host::DiagnosticLoggerRecords::open(logger, static_cast<int>(level))),
      uncaughtAtOpen_(std::uncaught_exceptions()) {
    if (record_) {
        stream_.emplace(message_);
    }
}

LogRecord::~LogRecord() {
    if (!record_) {
        return;
    }
    // A record composed while a new exception was unwinding through the statement is
    // incomplete: drop it rather than push half a line.
    if (std::uncaught_exceptions() > uncaughtAtOpen_) {
        return;
    }
    stream_->flush();
    tessel::host::DiagnosticLoggerRecords::push(logger_, std::move(record_), std::move(message_));
}

void LogRecord::write(const char* data, std::size_t size) {
    if (!record_) {
        return;
    }
    boost::log::formatting_ostream& stream = *stream_;
    const std::streamsize width = stream.width();
    const auto length = static_cast<std::streamsize>(size);
    if (width > length) {
        const std::string padding(static_cast<std::size_t>(width - length), stream.fill());
        const bool left = (stream.flags() & std::ios_base::adjustfield) == std::ios_base::left;
        if (!left) {
            stream.write(padding.data(), static_cast<std::streamsize>(padding.size()));
        }
        stream.write(data, length);
        if (left) {
            stream.write(padding.data(), static_cast<std::streamsize>(padding.size()));
        }
    } else {
        stream.write(data, length);
    }
    stream.width(0);
}

LogRecord& LogRecord::operator<<(std::string_view piece) {
    write(piece.data(), piece.size());
    return *this;
}

LogRecord& LogRecord::operator<<(const std::u16string& piece) {
    if (record_) {
        // The stream converts UTF-16 itself (and honours and resets the width).
        *stream_ << piece.c_str();
        stream_->width(0);
    }
    return *this;
}

LogRecord& LogRecord::operator<<(const tessel::host::HostPath& path) {
    if (!record_) {
        return *this;
    }
    const std::string text = tessel::host::toUtf8(path.native());
    write(text.data(), text.size());
    return *this;
}

LogRecord& LogRecord::operator<<(long long value) {
    if (!record_) {
        return *this;
    }
    const std::string text = std::to_string(value);
    write(text.data(), text.size());
    return *this;
}

void LogRecord::width(std::streamsize width) {
    if (record_) {
        stream_->width(width);
    }
}

}  // namespace tessel::io::archive::core
