#include <archive/core/error/ExtractFailures.hpp>

#include <array>

#include <archive/core/error/FailureTable.hpp>
#include <archive/core/error/messages/extractArchive.hpp>
#include <archive/core/error/messages/gunzip.hpp>
#include <archive/core/error/messages/untar.hpp>
#include <archive/core/error/messages/unzip.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostError.hpp>

namespace tessel::io::archive::core {

namespace {

namespace messages = TESSEL::io::archive;
using Rule = NullArchiveRule;
using Tables = TableSet<ExtractFailureTable>;

enum class Argument {
    None,
    ArchivePath,
    Entry,
    FailureMessage,      // what the failing object said: a path, a link's target
    FormatName,          // "zip" or "tar"
    ProtectedEntryText,  // the text of extractArchive:protectedEntry
};

// When a row applies beyond its rule and format.
enum class Condition {
    Always,
    ReadFailed,  // the entry's data could not be read
};

struct Row {
    NullArchiveRule rule;
    FormatSet formats;
    Tables calls;
    RaisedMessage message;
    std::array<Argument, kMaxFailureArguments> arguments;
    Condition condition = Condition::Always;
};

constexpr Tables kEvery{ExtractFailureTable::ExtractArchive, ExtractFailureTable::OptionCalls,
                        ExtractFailureTable::Testing};
constexpr Tables kExtractArchive{ExtractFailureTable::ExtractArchive};
constexpr Tables kOptionCalls{ExtractFailureTable::OptionCalls, ExtractFailureTable::Testing};
constexpr Tables kTesting{ExtractFailureTable::Testing};
constexpr FormatSet kZip{ArchiveFormat::Zip};
constexpr FormatSet kTgz{ArchiveFormat::Tgz};
constexpr FormatSet kGz{ArchiveFormat::Gz};
constexpr FormatSet kAny = FormatSet::any();

constexpr RaisedMessage kDamagedZip = raised<messages::unzip::invalidZipFile>();
constexpr RaisedMessage kDamagedTar = raised<messages::untar::invalidTarFile>();

// In order: the first row that fits is raised.
constexpr Row kRows[] = {
    // A gzip file under test.
    {.rule = Rule::NotGzipFormat,
     .formats = kGz,
     .calls = kTesting,
     .message = raised<messages::gunzip::notGzipFormat>(),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::CouldNotOpenFile,
     .formats = kGz,
     .calls = kTesting,
     .message = raised<messages::gunzip::javaOpenError>(),
     .arguments = {Argument::ArchivePath}},

    // A damaged archive: extractArchive names it by the format text, and only for "tgz"
    // and "zip" (an unreadable entry only for "zip").
    {.rule = Rule::CouldNotOpenFile,
     .formats = kTgz,
     .calls = kExtractArchive,
     .message = kDamagedTar,
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::CouldNotOpenFile,
     .formats = kZip,
     .calls = kExtractArchive,
     .message = kDamagedZip,
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::CouldNotWriteFile,
     .formats = kZip,
     .calls = kExtractArchive,
     .message = kDamagedZip,
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::InvalidEntryHeader,
     .formats = kZip,
     .calls = kExtractArchive,
     .message = kDamagedZip,
     .arguments = {Argument::ArchivePath}},

    // The calls with options name every damaged archive, a zip as a zip, anything else as
    // a tar; data that could not be written is a write error.
    {.rule = Rule::CouldNotOpenFile,
     .formats = kZip,
     .calls = kOptionCalls,
     .message = kDamagedZip,
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::CouldNotOpenFile,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = kDamagedTar,
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::InvalidEntryHeader,
     .formats = kZip,
     .calls = kOptionCalls,
     .message = kDamagedZip,
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::InvalidEntryHeader,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = kDamagedTar,
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::CouldNotWriteFile,
     .formats = kZip,
     .calls = kOptionCalls,
     .message = kDamagedZip,
     .arguments = {Argument::ArchivePath},
     .condition = Condition::ReadFailed},
    {.rule = Rule::CouldNotWriteFile,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = kDamagedTar,
     .arguments = {Argument::ArchivePath},
     .condition = Condition::ReadFailed},
    {.rule = Rule::CouldNotWriteFile,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::extractArchive::writeError>(),
     .arguments = {Argument::FailureMessage}},
    {.rule = Rule::EntryOutsideFolder,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::extractArchive::entryOutsideFolder>(),
     .arguments = {Argument::Entry, Argument::ArchivePath}},
    {.rule = Rule::EntryThroughSymlink,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::extractArchive::entryThroughSymlink>(),
     .arguments = {Argument::Entry, Argument::ArchivePath}},
    {.rule = Rule::LinkOutsideFolder,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::extractArchive::linkOutsideFolder>(),
     .arguments = {Argument::Entry, Argument::FailureMessage, Argument::ArchivePath}},
    {.rule = Rule::Cancelled,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::extractArchive::cancelled>(),
     .arguments = {}},

    // Every reading: a password missing or wrong, decryption unavailable, an empty entry
    // name, a full disk.
    {.rule = Rule::PasswordProtected,
     .formats = kAny,
     .calls = kEvery,
     .message = raised<messages::extractArchive::unableToWrite>(),
     .arguments = {Argument::ArchivePath, Argument::ProtectedEntryText}},
    {.rule = Rule::IncorrectPassphrase,
     .formats = kAny,
     .calls = kEvery,
     .message = raised<messages::extractArchive::incorrectPassword>(),
     .arguments = {}},
    {.rule = Rule::EmptyEntryFilename,
     .formats = kAny,
     .calls = kEvery,
     .message = raised<messages::extractArchive::emptyEntryFilename>(),
     .arguments = {Argument::FormatName, Argument::ArchivePath}},
    {.rule = Rule::DiskSpaceFull,
     .formats = kAny,
     .calls = kEvery,
     .message = raised<messages::extractArchive::outputDiskFull>(),
     .arguments = {}},
    {.rule = Rule::CryptoUnsupported,
     .formats = kAny,
     .calls = kEvery,
     .message = raised<messages::extractArchive::unsupportedEncryptionInLinux>(),
     .arguments = {}},
};
static_assert(argumentCountsMatch(kRows));

tessel::host::MessageArgument argumentOf(Argument argument, const ArchiveException& failure,
                                         const ExtractFailureSubject& subject) {
    switch (argument) {
        case Argument::Entry:
            return subject.entry;
        case Argument::FailureMessage:
            return failure.message;
        case Argument::FormatName:
            return std::u16string(subject.format == ArchiveFormat::Zip ? u"zip" : u"tar");
        case Argument::ProtectedEntryText:
            return tessel::host::lookupMessage("TESSEL:io:archive:extractArchive:protectedEntry");
        case Argument::ArchivePath:
        case Argument::None:
            break;
    }
    return subject.archivePath;
}

}  // namespace

void raiseExtractFailure(const ArchiveException& failure, ExtractFailureTable table,
                         const ExtractFailureSubject& subject) {
    const Row* row = findFailureRow(kRows, failure.rule, table, subject.format, [&](const Row& r) {
        return r.condition == Condition::Always || subject.readFailed;
    });
    if (row == nullptr) {
        rethrowAsHostError(failure);
    }
    raiseRow(*row, [&](Argument argument) { return argumentOf(argument, failure, subject); });
}

}  // namespace tessel::io::archive::core
