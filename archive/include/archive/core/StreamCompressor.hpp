#pragma once

#include <memory>
#include <string>

#include <archive/core/CreateOptions.hpp>
#include <archive/core/api.hpp>

namespace tessel::io::archive::core {

class ArchiveCreator;

// The compression of a tar archive, apart from its tar stream: a caller with a second
// thread has createArchiveWithOptions write the plain tar into a pipe and compresses what
// comes out of the pipe here, so that reading files and compressing them overlap. The
// output is the archive createArchiveWithOptions would write with the same filter and
// level, and failures raise the errors it would raise for it. The library starts no
// thread: both halves run on threads of the caller's.
class StreamCompressor {
  public:
    // Sets options.filter ("gzip" when empty) and options.level and opens the output,
    // options.outputDescriptor or else archivePath, which also names the archive in
    // messages: createArchive:unknownArchiveType, createArchive:invalidCompression,
    // tar:openError.
    TQARCHIVE_API StreamCompressor(const std::u16string& archivePath, CreateOptions options);
    TQARCHIVE_API ~StreamCompressor();
    StreamCompressor(const StreamCompressor&) = delete;
    StreamCompressor& operator=(const StreamCompressor&) = delete;

    // Compresses everything read from the descriptor up to its end, then finishes the
    // output and reports its final close: tar:DiskSpaceFull, createArchive:writeError.
    // The descriptor stays open. Called once; a second call raises the internal error.
    TQARCHIVE_API void compress(int inputDescriptor);

  private:
    std::u16string archivePath_;
    CreateOptions options_;
    std::unique_ptr<ArchiveCreator> creator_;
};

}  // namespace tessel::io::archive::core
