#include <archive/core/StreamCompressor.hpp>

#include <unistd.h>

#include <archive.h>
#include <archive_entry.h>

#include <cerrno>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/CreateFailures.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/objects/ArchiveCreator.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

// What a pipe holds at once: one read takes whatever the writer has put in it.
constexpr std::size_t kBlockSize = 64 * 1024;

struct EntryFreer {
    void operator()(::archive_entry* entry) const noexcept { archive_entry_free(entry); }
};

// The errors createArchiveWithOptions raises for the same tar archive.
[[noreturn]] void raiseAsCreateArchiveWithOptions(const ArchiveException& failure,
                                                  const std::u16string& archivePath,
                                                  const CreateOptions& options) {
    raiseCreateFailure(failure, CreateFailureTable::OptionCalls,
                       {archivePath, ArchiveFormat::Tar, options});
}

}  // namespace

StreamCompressor::StreamCompressor(const std::u16string& archivePath, CreateOptions options)
    : archivePath_(archivePath), options_(std::move(options)) {
    if (options_.filter.empty()) {
        options_.filter = u"gzip";
    }
    // The compression of a tar stream, which holds any encryption itself.
    options_.password.reset();
    try {
        creator_ = std::make_unique<ArchiveCreator>(tessel::host::HostPath::fromText(archivePath_),
                                                    ArchiveFormat::Tar, options_,
                                                    ArchiveCreator::Content::RawStream);
    } catch (const ArchiveException& failure) {
        raiseAsCreateArchiveWithOptions(failure, archivePath_, options_);
    } catch (...) {
        rethrowAsHostError();
    }
}

StreamCompressor::~StreamCompressor() = default;

void StreamCompressor::compress(int inputDescriptor) {
    try {
        if (!creator_) {
            throw std::logic_error(
                "StreamCompressor::compress called after the output was finished");
        }
        const std::unique_ptr<::archive_entry, EntryFreer> entry(archive_entry_new());
        if (!entry) {
            throw std::bad_alloc();
        }
        // The raw format takes one regular file and writes nothing of it but its bytes.
        archive_entry_set_pathname(entry.get(), "stream");
        archive_entry_set_filetype(entry.get(), AE_IFREG);
        archive_entry_set_perm(entry.get(), 0644);
        if (!creator_->writeHeader(entry.get())) {
            throwInternalError(NullArchiveRule::InvalidEntryHeader);
        }
        std::vector<char> block(kBlockSize);
        for (;;) {
            const ssize_t got = ::read(inputDescriptor, block.data(), block.size());
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                throwInternalError(NullArchiveRule::CouldNotOpenFile);
            }
            if (got == 0) {
                break;
            }
            creator_->writeData(block.data(), static_cast<std::size_t>(got));
        }
        creator_->finish();
        creator_.reset();
    } catch (const ArchiveException& failure) {
        raiseAsCreateArchiveWithOptions(failure, archivePath_, options_);
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
