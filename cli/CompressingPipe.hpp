#pragma once

#include <atomic>
#include <exception>
#include <memory>
#include <string>
#include <thread>

#include <archive/core/archivecore.hpp>

namespace tqarchive {

// Compresses a tar archive on a second core: the library writes the plain tar into this
// pipe, and a thread of its own compresses what comes out into the output, so reading
// files and compressing them overlap (the library starts no threads). Filter and level
// are checked, and the output opened, before anything is read.
class CompressingPipe {
  public:
    // options: the filter, level and output descriptor the archive is written with.
    CompressingPipe(const std::u16string& archivePath,
                    const tessel::io::archive::core::CreateOptions& options);
    ~CompressingPipe();
    CompressingPipe(const CompressingPipe&) = delete;
    CompressingPipe& operator=(const CompressingPipe&) = delete;

    // Where the library writes the plain tar.
    int input() const noexcept { return input_; }
    // True once the compression failed: the writer should stop (the pipe is still read,
    // so it never blocks).
    bool failed() const noexcept { return failed_.load(); }
    // Ends the input, waits for the compression to finish and raises its failure. Also
    // after the writer failed: a failure of the compression (a full disk) came first, and
    // the writer's only followed from it.
    void finish();

  private:
    void run();
    void endInput();

    std::unique_ptr<tessel::io::archive::core::StreamCompressor> compressor_;
    int input_ = -1;
    int output_ = -1;
    std::atomic<bool> failed_{false};
    std::exception_ptr failure_;
    std::thread worker_;  // last: started once everything above exists
};

}  // namespace tqarchive
