#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <archive.h>
#include <archive_entry.h>

#include <archive/core/ExtractOptions.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// Writes archive entries to disk through one libarchive write-disk handle, restoring
// permissions, times, ACLs and file flags. Keeps the paths of the entries it completed
// and can delete the file of the entry in progress.
class ArchiveDiskWriter {
  public:
    // Existing files are replaced, and nothing is refused but what libarchive refuses.
    explicit ArchiveDiskWriter(tessel::host::HostPath outputFolder);
    // As the options say: confine (libarchive's secure-extraction flags, on the folder's
    // canonical form; listed paths are still shown under the caller's name), safeWrites
    // (a replacement goes through a temporary), keepExisting (an existing file is left
    // alone; the caller warns before that happens). With either of the last two, a hard link
    // carrying data gets a file of its own instead of writing into the file it names; with
    // safe writes, a folder entry still replaces a file in its way.
    ArchiveDiskWriter(const std::u16string& outputFolder, const ExtractOptions& options);
    ~ArchiveDiskWriter();
    ArchiveDiskWriter(const ArchiveDiskWriter&) = delete;
    ArchiveDiskWriter& operator=(const ArchiveDiskWriter&) = delete;
    ArchiveDiskWriter(ArchiveDiskWriter&&) = delete;
    ArchiveDiskWriter& operator=(ArchiveDiskWriter&&) = delete;

    std::u16string outputFolder() const { return outputFolder_.native(); }
    const std::vector<std::u16string>& writtenFiles() const noexcept { return writtenFiles_; }

    // Starts the entry at its pathname (already the full on-disk path). false: the entry
    // is to be skipped, its warning issued. With the strict format Gz every refusal
    // raises instead.
    // targetAbsent: the caller has just seen that nothing is at the path, so there is
    // nothing whose permissions to check.
    bool writeHeader(::archive_entry* entry,
                     std::optional<ArchiveFormat> strictFormat = std::nullopt,
                     bool targetAbsent = false);

    // libarchive's status; a full disk raises DiskSpaceFull.
    int writeDataBlock(const void* buffer, std::size_t size, la_int64_t offset);

    // Whether the entry whose header was written last goes to a temporary that replaces,
    // when the entry is finished, what is now at its path.
    bool writesThroughTemporary() const noexcept { return linkDataToTemporary_; }

    // Lists the entry's path (folders with a trailing separator) once its data is copied.
    void recordWrittenFile(::archive_entry* entry);

    // Removes the file of the entry whose header was written last, if any.
    void deleteCurrentEntryFile();

    // Gives up the entry in progress without touching the file it was replacing: with safe
    // writes its data is still in libarchive's temporary, which goes, and the file under
    // the entry's name stays as it was.
    void abandonReplacement();

    // Finishes the entry written last, whose file libarchive completes (a replacement
    // renamed into place, times and permissions set) only when the next one begins: done
    // before a failed call takes back what it made, which may lie on that file's path.
    void finishLastEntry();

  private:
    struct HandleCloser {
        void operator()(::archive* handle) const noexcept {
            archive_write_close(handle);
            archive_write_free(handle);
        }
    };

    void open(int flags);
    std::u16string shown(std::u16string path) const;
    int writeEntryHeader(::archive_entry* entry);
    int writeLinkThenFile(::archive_entry* entry);
    void useOptionsForThisEntry(int flags);

    std::unique_ptr<::archive, HandleCloser> handle_;
    int flags_ = 0;
    // The entry written last was written with other options than flags_, kept until it is
    // finished.
    bool optionsChanged_ = false;
    std::vector<std::u16string> writtenFiles_;
    tessel::host::HostPath outputFolder_;
    std::optional<tessel::host::HostPath> currentEntryPath_;
    bool confine_ = false;
    bool safeWrites_ = false;
    // A hard link carrying data gets a file of its own (the option calls).
    bool ownFileForLinkData_ = false;
    bool linkDataToTemporary_ = false;
    // The output folder as the caller named it, when the writer works on its canonical
    // form.
    std::optional<std::u16string> shownFolder_;
};

}  // namespace tessel::io::archive::core
