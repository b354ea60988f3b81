#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>

#include <archive/core/archivecore.hpp>

namespace tqarchive {

// Decompresses a gzip-compressed tar on a second core: a thread of its own gunzips the
// archive with the library, which checks every member against its trailer, into a pipe,
// and the library extracts the plain tar from the far end. The archive is inflated once,
// beside the extraction; the gunzip's failure is the extraction's upstream verdict, so
// damage found only in the last trailer still fails the extraction, which then takes back
// what it made.
class DecompressingPipe {
  public:
    // archive names the archive; descriptor is the archive open for reading, or -1 to
    // open it by that name.
    DecompressingPipe(const std::u16string& archive, int descriptor);
    ~DecompressingPipe();
    DecompressingPipe(const DecompressingPipe&) = delete;
    DecompressingPipe& operator=(const DecompressingPipe&) = delete;

    // True when the file's content starts like gzip.
    static bool isGzip(const std::string& archive);

    // Where the plain tar comes out (ExtractOptions::inputDescriptor).
    int output() const noexcept { return output_; }
    // Once the output has been read to its end: what went wrong in the gunzip, if anything
    // (ExtractOptions::upstreamVerdict).
    std::optional<std::string> verdict();
    // The extraction's progress, told in bytes of the archive file as the gunzip reads it.
    tessel::io::archive::core::Progress progress(
        const tessel::io::archive::core::Progress& extracting) const;

  private:
    void run(std::u16string archive, int descriptor);

    int output_ = -1;
    int input_ = -1;
    std::atomic<std::uint64_t> bytesDone_{0};
    std::atomic<std::uint64_t> bytesTotal_{0};
    std::optional<std::string> failure_;  // written by the thread, read after it ended
    std::thread worker_;                  // last: started once everything above exists
};

}  // namespace tqarchive
