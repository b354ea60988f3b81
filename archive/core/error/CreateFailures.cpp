#include <archive/core/error/CreateFailures.hpp>

#include <array>

#include <archive/core/error/FailureTable.hpp>
#include <archive/core/error/messages/createArchive.hpp>
#include <archive/core/error/messages/tar.hpp>
#include <archive/core/error/messages/zip.hpp>
#include <archive/core/rethrowAsHostError.hpp>

namespace tessel::io::archive::core {

namespace {

namespace messages = TESSEL::io::archive;
using Rule = NullArchiveRule;
using Tables = TableSet<CreateFailureTable>;

enum class Argument {
    None,
    ArchivePath,
    FilterName,  // the options' filter, else the format's own compression
    Level,       // the options' level, in decimal (UTF-8)
    NameLength,  // the refused name's length in bytes, in decimal (the failure's message)
    NameLimit,   // the most the format's name field holds, in decimal
};

struct Row {
    NullArchiveRule rule;
    FormatSet formats;
    Tables calls;
    RaisedMessage message;
    std::array<Argument, kMaxFailureArguments> arguments;
};

constexpr Tables kEvery{CreateFailureTable::CreateArchive, CreateFailureTable::OptionCalls};
constexpr Tables kOptionCalls{CreateFailureTable::OptionCalls};
constexpr FormatSet kZip{ArchiveFormat::Zip};
constexpr FormatSet kTarFamily{ArchiveFormat::Tar, ArchiveFormat::Tgz};
constexpr FormatSet kInvalid{ArchiveFormat::Invalid};
constexpr FormatSet kAny = FormatSet::any();
constexpr const char* kZipDiskFull = "TESSEL:io:archive:zip:DiskSpaceFull";
constexpr const char* kTarDiskFull = "TESSEL:io:archive:tar:DiskSpaceFull";

// In order: the first row that fits is raised.
constexpr Row kRows[] = {
    {.rule = Rule::CouldNotOpenArchiveForWriting,
     .formats = kZip,
     .calls = kEvery,
     .message = raised<messages::zip::openError>(),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::CouldNotOpenArchiveForWriting,
     .formats = kTarFamily,
     .calls = kEvery,
     .message = raised<messages::tar::openError>(),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::AccessDenied,
     .formats = kZip,
     .calls = kEvery,
     .message = raised<messages::zip::openError>(),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::AccessDenied,
     .formats = kTarFamily,
     .calls = kEvery,
     .message = raised<messages::tar::openError>(),
     .arguments = {Argument::ArchivePath}},
    // One message, under the identifier of the archive's family; the option calls count
    // every format but zip in the tar family.
    {.rule = Rule::DiskSpaceFull,
     .formats = kZip,
     .calls = kEvery,
     .message = raised<messages::createArchive::DiskSpaceFull>(kZipDiskFull),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::DiskSpaceFull,
     .formats = kTarFamily,
     .calls = kEvery,
     .message = raised<messages::createArchive::DiskSpaceFull>(kTarDiskFull),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::DiskSpaceFull,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::createArchive::DiskSpaceFull>(kTarDiskFull),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::EmptyPassphrase,
     .formats = kZip,
     .calls = kEvery,
     .message = raised<messages::createArchive::emptyPassword>(),
     .arguments = {}},
    {.rule = Rule::EmptyPassphrase,
     .formats = kInvalid,
     .calls = kEvery,
     .message = raised<messages::createArchive::invalidArchiveFormat>(),
     .arguments = {}},
    {.rule = Rule::EncryptionNotSupported,
     .formats = kZip,
     .calls = kEvery,
     .message = raised<messages::createArchive::invalidEncryptionInLinux>(),
     .arguments = {}},
    {.rule = Rule::EncryptionNotSupported,
     .formats = kInvalid,
     .calls = kEvery,
     .message = raised<messages::createArchive::invalidArchiveFormat>(),
     .arguments = {}},
    {.rule = Rule::CryptoUnsupported,
     .formats = kZip,
     .calls = kEvery,
     .message = raised<messages::createArchive::unsupportedEncryptionInLinux>(),
     .arguments = {}},
    {.rule = Rule::UnableToSetFormat,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::createArchive::unknownArchiveType>(),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::UnableToSetFilter,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::createArchive::unknownArchiveType>(),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::InvalidCompressionLevel,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::createArchive::invalidCompression>(),
     .arguments = {Argument::FilterName, Argument::Level}},
    {.rule = Rule::EntryNameTooLong,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::createArchive::entryNameTooLong>(),
     .arguments = {Argument::ArchivePath, Argument::NameLength, Argument::NameLimit}},
    {.rule = Rule::CouldNotWriteFile,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::createArchive::writeError>(),
     .arguments = {Argument::ArchivePath}},
    {.rule = Rule::Cancelled,
     .formats = kAny,
     .calls = kOptionCalls,
     .message = raised<messages::createArchive::cancelled>(),
     .arguments = {}},
};
static_assert(argumentCountsMatch(kRows));

tessel::host::MessageArgument argumentOf(Argument argument, const ArchiveException& failure,
                                         const CreateFailureSubject& subject) {
    switch (argument) {
        case Argument::NameLength:
            return failure.message;
        case Argument::NameLimit:
            return std::to_string(kZipEntryNameLimit);
        case Argument::FilterName:
            if (!subject.options.filter.empty()) {
                return subject.options.filter;
            }
            return std::u16string(subject.format == ArchiveFormat::Zip ? u"zip" : u"gzip");
        case Argument::Level:
            return std::to_string(subject.options.level);
        case Argument::ArchivePath:
        case Argument::None:
            break;
    }
    return subject.archivePath;
}

}  // namespace

void raiseCreateFailure(const ArchiveException& failure, CreateFailureTable table,
                        const CreateFailureSubject& subject) {
    const Row* row =
        findFailureRow(kRows, failure.rule, table, subject.format, [](const Row&) { return true; });
    if (row == nullptr) {
        rethrowAsHostError(failure);
    }
    raiseRow(*row, [&](Argument argument) { return argumentOf(argument, failure, subject); });
}

}  // namespace tessel::io::archive::core
