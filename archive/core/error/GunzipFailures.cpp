#include <archive/core/error/GunzipFailures.hpp>

#include <array>

#include <archive/core/error/FailureTable.hpp>
#include <archive/core/error/messages/extractArchive.hpp>
#include <archive/core/error/messages/gunzip.hpp>
#include <archive/core/rethrowAsHostError.hpp>

namespace tessel::io::archive::core {

namespace {

namespace messages = TESSEL::io::archive;
using Rule = NullArchiveRule;
using Tables = TableSet<GunzipFailureTable>;

enum class Argument {
    None,
    Input,
    OutputName,
    FailureMessage,  // the path the writer named
};

struct Row {
    NullArchiveRule rule;
    Tables calls;
    RaisedMessage message;
    std::array<Argument, kMaxFailureArguments> arguments;
    FormatSet formats = FormatSet::any();  // gzip has one format
};

constexpr Tables kEvery{GunzipFailureTable::Uncompressgz, GunzipFailureTable::OptionCalls};
constexpr Tables kOptionCalls{GunzipFailureTable::OptionCalls};

// In order: the first row that fits is raised.
constexpr Row kRows[] = {
    {.rule = Rule::CouldNotOpenFile,
     .calls = kEvery,
     .message = raised<messages::gunzip::javaOpenError>(),
     .arguments = {Argument::Input}},
    {.rule = Rule::PermissionDenied,
     .calls = kEvery,
     .message = raised<messages::gunzip::javaOutputOpenError>(),
     .arguments = {Argument::FailureMessage}},
    {.rule = Rule::UnableToOverwrite,
     .calls = kEvery,
     .message = raised<messages::gunzip::javaOutputOpenError>(),
     .arguments = {Argument::FailureMessage}},
    {.rule = Rule::CorruptGzFile,
     .calls = kEvery,
     .message = raised<messages::gunzip::javaCopyStreamError>(),
     .arguments = {Argument::OutputName}},
    {.rule = Rule::NotGzipFormat,
     .calls = kEvery,
     .message = raised<messages::gunzip::notGzipFormat>(),
     .arguments = {Argument::Input}},
    {.rule = Rule::OverwriteOpenFile,
     .calls = kEvery,
     .message = raised<messages::extractArchive::OverwriteOpenFile>(),
     .arguments = {Argument::FailureMessage}},
    {.rule = Rule::DiskSpaceFull,
     .calls = kEvery,
     .message = raised<messages::extractArchive::outputDiskFull>(),
     .arguments = {}},
    {.rule = Rule::Cancelled,
     .calls = kOptionCalls,
     .message = raised<messages::extractArchive::cancelled>(),
     .arguments = {}},
};
static_assert(argumentCountsMatch(kRows));

tessel::host::MessageArgument argumentOf(Argument argument, const ArchiveException& failure,
                                         const GunzipFailureSubject& subject) {
    switch (argument) {
        case Argument::OutputName:
            return subject.outputName;
        case Argument::FailureMessage:
            return failure.message;
        case Argument::Input:
        case Argument::None:
            break;
    }
    return subject.input;
}

}  // namespace

void raiseGunzipFailure(const ArchiveException& failure, GunzipFailureTable table,
                        const GunzipFailureSubject& subject) {
    const Row* row = findFailureRow(kRows, failure.rule, table, ArchiveFormat::Gz,
                                    [](const Row&) { return true; });
    if (row == nullptr) {
        rethrowAsHostError(failure);
    }
    raiseRow(*row, [&](Argument argument) { return argumentOf(argument, failure, subject); });
}

}  // namespace tessel::io::archive::core
