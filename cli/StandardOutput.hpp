#pragma once

namespace tqarchive {

// Standard output as this program uses it: for data (-c, ARCHIVE -) and for lines (names,
// listings, reports). A run succeeds only if everything it wrote there arrived.
class StandardOutput {
  public:
    // Call first in main. A standard descriptor the caller closed (">&-") is taken by
    // /dev/null opened the wrong way round, so no file this program opens can become
    // descriptor 1 and receive its lines, and every write to it fails visibly.
    static void reserveClosedDescriptors();

    // Raises "tqarchive:standardOutputClosed" when data is about to be written to a
    // standard output the caller closed: nothing is read or written first.
    static void requireOpen();

    // Flushes what was written; raises "tqarchive:standardOutputError" when any of it
    // could not be written (closed, a full disk, a broken pipe).
    static void finish();
};

}  // namespace tqarchive
