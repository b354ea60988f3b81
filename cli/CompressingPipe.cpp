#include "CompressingPipe.hpp"

#include <unistd.h>

#include <cerrno>
#include <tuple>

#include "makePipe.hpp"

namespace tqarchive {

namespace core = tessel::io::archive::core;

CompressingPipe::CompressingPipe(const std::u16string& archivePath,
                                 const core::CreateOptions& options)
    : compressor_(std::make_unique<core::StreamCompressor>(archivePath, options)) {
    std::tie(output_, input_) = makePipe();
    worker_ = std::thread([this] { run(); });
}

CompressingPipe::~CompressingPipe() {
    endInput();
    if (worker_.joinable()) {
        worker_.join();
    }
    ::close(output_);
}

void CompressingPipe::run() {
    try {
        compressor_->compress(output_);
        compressor_.reset();
    } catch (...) {
        failure_ = std::current_exception();
        failed_ = true;
        // Drained to the end, so that the writer neither blocks nor meets a closed pipe.
        char sink[64 * 1024];
        ssize_t got = 0;
        while ((got = ::read(output_, sink, sizeof sink)) > 0 || (got < 0 && errno == EINTR)) {
        }
    }
}

void CompressingPipe::endInput() {
    if (input_ >= 0) {
        ::close(input_);
        input_ = -1;
    }
}

void CompressingPipe::finish() {
    endInput();
    if (worker_.joinable()) {
        worker_.join();
    }
    if (failure_) {
        std::rethrow_exception(failure_);
    }
}

}  // namespace tqarchive
