#include <archive/core/error/GzipFailures.hpp>

#include <array>

#include <archive/core/error/FailureTable.hpp>
#include <archive/core/error/messages/createArchive.hpp>
#include <archive/core/error/messages/gzip.hpp>
#include <archive/core/rethrowAsHostError.hpp>

namespace tessel::io::archive::core {

namespace {

namespace messages = TESSEL::io::archive;
using Rule = NullArchiveRule;
using Tables = TableSet<GzipFailureTable>;

enum class Argument {
    None,
    Input,
    Output,
    FilterName,  // "gzip"
    Level,       // in decimal (UTF-8)
};

enum class Output { Kept, Removed };

struct Row {
    NullArchiveRule rule;
    Tables calls;
    RaisedMessage message;
    std::array<Argument, kMaxFailureArguments> arguments;
    Output output;
    FormatSet formats = FormatSet::any();  // gzip has one format
};

// What becomes of the output after a failure no row names.
struct Otherwise {
    GzipFailureTable table;
    Output output;
};

constexpr Tables kEvery{GzipFailureTable::Compressgz, GzipFailureTable::CompressgzToFile};
constexpr Tables kCompressgz{GzipFailureTable::Compressgz};
constexpr Tables kToFile{GzipFailureTable::CompressgzToFile};

// In order: the first row that fits is raised.
constexpr Row kRows[] = {
    // An input that cannot be opened has no output yet, or (compressgz) the previous
    // input's, which stays.
    {.rule = Rule::CouldNotOpenFile,
     .calls = kCompressgz,
     .message = raised<messages::gzip::javaOpenError>(),
     .arguments = {Argument::Input},
     .output = Output::Kept},
    {.rule = Rule::CouldNotOpenFile,
     .calls = kToFile,
     .message = raised<messages::gzip::javaOpenError>(),
     .arguments = {Argument::Input},
     .output = Output::Removed},
    // A failure while reading or writing the input removes its half-written output.
    {.rule = Rule::InvalidEntryHeader,
     .calls = kEvery,
     .message = raised<messages::gzip::javaOpenError>(),
     .arguments = {Argument::Input},
     .output = Output::Removed},
    {.rule = Rule::OpenEntryError,
     .calls = kEvery,
     .message = raised<messages::gzip::javaOpenError>(),
     .arguments = {Argument::Input},
     .output = Output::Removed},
    {.rule = Rule::CouldNotWriteFile,
     .calls = kEvery,
     .message = raised<messages::gzip::javaOutputOpenError>(),
     .arguments = {Argument::Output},
     .output = Output::Removed},
    {.rule = Rule::CouldNotOpenArchiveForWriting,
     .calls = kCompressgz,
     .message = raised<messages::gzip::javaOutputOpenError>(),
     .arguments = {Argument::Output},
     .output = Output::Kept},
    {.rule = Rule::CouldNotOpenArchiveForWriting,
     .calls = kToFile,
     .message = raised<messages::gzip::javaOutputOpenError>(),
     .arguments = {Argument::Output},
     .output = Output::Removed},
    {.rule = Rule::AccessDenied,
     .calls = kCompressgz,
     .message = raised<messages::gzip::javaOutputOpenError>(),
     .arguments = {Argument::Output},
     .output = Output::Kept},
    {.rule = Rule::AccessDenied,
     .calls = kToFile,
     .message = raised<messages::gzip::javaOutputOpenError>(),
     .arguments = {Argument::Output},
     .output = Output::Removed},
    {.rule = Rule::DiskSpaceFull,
     .calls = kToFile,
     .message = raised<messages::gzip::outputDiskFull>(),
     .arguments = {Argument::Output},
     .output = Output::Removed},
    {.rule = Rule::InvalidCompressionLevel,
     .calls = kToFile,
     .message = raised<messages::createArchive::invalidCompression>(),
     .arguments = {Argument::FilterName, Argument::Level},
     .output = Output::Removed},
    {.rule = Rule::Cancelled,
     .calls = kToFile,
     .message = raised<messages::createArchive::cancelled>(),
     .arguments = {},
     .output = Output::Removed},
};
static_assert(argumentCountsMatch(kRows));

// compressgz keeps a full disk's output, as everything else without a row.
constexpr Otherwise kOtherwise[] = {
    {GzipFailureTable::Compressgz, Output::Kept},
    {GzipFailureTable::CompressgzToFile, Output::Removed},
};

const Row* rowFor(NullArchiveRule rule, GzipFailureTable table) {
    return findFailureRow(kRows, rule, table, ArchiveFormat::Gz, [](const Row&) { return true; });
}

tessel::host::MessageArgument argumentOf(Argument argument, const GzipFailureSubject& subject) {
    switch (argument) {
        case Argument::Output:
            return subject.output;
        case Argument::FilterName:
            return std::u16string(u"gzip");
        case Argument::Level:
            return std::to_string(subject.level);
        case Argument::Input:
        case Argument::None:
            break;
    }
    return subject.input;
}

}  // namespace

bool gzipFailureRemovesOutput(const ArchiveException* failure, GzipFailureTable table) {
    if (const Row* row = failure != nullptr ? rowFor(failure->rule, table) : nullptr) {
        return row->output == Output::Removed;
    }
    for (const Otherwise& otherwise : kOtherwise) {
        if (otherwise.table == table) {
            return otherwise.output == Output::Removed;
        }
    }
    return false;
}

void raiseGzipFailure(const ArchiveException& failure, GzipFailureTable table,
                      const GzipFailureSubject& subject) {
    const Row* row = rowFor(failure.rule, table);
    if (row == nullptr) {
        rethrowAsHostError(failure);
    }
    raiseRow(*row, [&](Argument argument) { return argumentOf(argument, subject); });
}

}  // namespace tessel::io::archive::core
