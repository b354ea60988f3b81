#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <boost/log/core/record.hpp>
#include <boost/log/utility/formatting_ostream.hpp>

#include <archive/core/log/diagnosticLogger.hpp>
#include <host/DiagnosticLogger.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// One record of the diagnostic channel, open while it is composed. Pieces are written
// one after another with no separator into the record's formatting stream, which writes
// to a text of its own (not to the record, whose message attribute Boost.Log names
// through a registry that is gone while the process exits). Destruction pushes the
// record with the text, or drops it when an exception began while it was being composed.
class LogRecord {
  public:
    LogRecord(tessel::host::DiagnosticLogger& logger, std::uint32_t level);
    ~LogRecord();
    LogRecord(const LogRecord&) = delete;
    LogRecord& operator=(const LogRecord&) = delete;

    explicit operator bool() const noexcept { return static_cast<bool>(record_); }

    // A narrow piece (pointer and length), padded to the stream's field width when that
    // is larger; the width is reset afterwards.
    void write(const char* data, std::size_t size);

    LogRecord& operator<<(std::string_view piece);
    LogRecord& operator<<(const char* piece) { return *this << std::string_view(piece); }
    LogRecord& operator<<(const std::string& piece) { return *this << std::string_view(piece); }
    // UTF-16, through the stream's own code conversion.
    LogRecord& operator<<(const std::u16string& piece);
    // A path, in its access form as UTF-8.
    LogRecord& operator<<(const tessel::host::HostPath& path);
    // A number in decimal.
    LogRecord& operator<<(long long value);

    // The field width of the next piece (0: none).
    void width(std::streamsize width);

  private:
    tessel::host::DiagnosticLogger& logger_;
    boost::log::record record_;
    std::string message_;
    // Made only for a record some sink wants: most records are refused, and a stream is
    // costly to make.
    std::optional<boost::log::formatting_ostream> stream_;
    int uncaughtAtOpen_;
};

}  // namespace tessel::io::archive::core

// One log statement: the mask is tested before any piece is composed, so nothing is
// converted for a level that is off.
//   ARCHIVE_LOG(LogStep) << "Wrote entry to destination archive-->" << name;
#define ARCHIVE_LOG(LEVEL)                                                    \
    if (!::tessel::io::archive::core::diagnosticLogger().enabled(LEVEL)) {    \
    } else if (::tessel::io::archive::core::LogRecord tqLogRecord_{           \
                   ::tessel::io::archive::core::diagnosticLogger(), (LEVEL)}; \
               !tqLogRecord_) {                                               \
    } else                                                                    \
        tqLogRecord_
