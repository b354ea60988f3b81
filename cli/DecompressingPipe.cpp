#include "DecompressingPipe.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>
#include <tuple>

#include "InterruptFlag.hpp"
#include "makePipe.hpp"

namespace tqarchive {

namespace core = tessel::io::archive::core;

DecompressingPipe::DecompressingPipe(const std::u16string& archive, int descriptor) {
    std::tie(output_, input_) = makePipe();
    worker_ = std::thread([this, archive, descriptor] { run(archive, descriptor); });
}

DecompressingPipe::~DecompressingPipe() {
    // An extraction that stopped early (an error, a selection found whole) reads no more:
    // the gunzip's next write finds the pipe closed and it ends.
    ::close(output_);
    if (worker_.joinable()) {
        worker_.join();
    }
}

bool DecompressingPipe::isGzip(const std::string& archive) {
    const int descriptor = ::open(archive.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    std::array<unsigned char, 2> magic{};
    const bool gzip = ::pread(descriptor, magic.data(), magic.size(), 0) == 2 && magic[0] == 0x1f &&
                      magic[1] == 0x8b;
    ::close(descriptor);
    return gzip;
}

void DecompressingPipe::run(std::u16string archive, int descriptor) {
    // A reader that closed the pipe early gives this thread's write EPIPE; the signal
    // that comes with it stays pending here, and goes with the thread.
    sigset_t pipeSignal;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
    core::ExtractOptions options;
    options.inputDescriptor = descriptor;
    options.outputDescriptor = input_;
    options.progress = [this](const core::Progress& done) {
        bytesDone_ = done.bytesDone;
        bytesTotal_ = done.bytesTotal;
        return InterruptFlag::signal() == 0;
    };
    try {
        core::uncompressgzWithOptions({archive}, u"", true, options);
    } catch (const std::exception& error) {
        failure_ = error.what();
    }
    // The end of the tar for the extraction, whole or not.
    ::close(input_);
}

std::optional<std::string> DecompressingPipe::verdict() {
    if (worker_.joinable()) {
        worker_.join();
    }
    return failure_;
}

core::Progress DecompressingPipe::progress(const core::Progress& extracting) const {
    core::Progress progress = extracting;
    progress.bytesDone = bytesDone_;
    progress.bytesTotal = bytesTotal_;
    return progress;
}

}  // namespace tqarchive
