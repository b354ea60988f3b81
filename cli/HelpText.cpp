#include "HelpText.hpp"

namespace tqarchive {

namespace {

constexpr const char* kOverview = R"(Usage: tqarchive COMMAND [OPTION...] OPERAND...

Creates and extracts zip, tar and gzip-compressed tar archives, and gzips and gunzips
files, with libtqarchivecore.

Commands:
  zip ARCHIVE INPUT...     pack files and folders into a zip archive (optionally encrypted)
  tar ARCHIVE INPUT...     pack files and folders into a tar archive (.tar, .tgz, .tar.gz, ...)
  unzip ARCHIVE [ENTRY...] extract a zip archive
  untar ARCHIVE [ENTRY...] extract a tar archive
  gzip INPUT...            compress each file to FILE.gz
  gunzip INPUT...          decompress each FILE.gz

Options for every command:
  --log FILE     append the library's diagnostic log to FILE
  -q, --quiet    do not list the names written on standard output
  -h, --help     show the help of the command
  --version      show the version

Run 'tqarchive COMMAND --help' for the options and examples of a command.

Standard output lists the names written, one a line. Warnings and errors go to standard
error as "Warning: TEXT [IDENTIFIER]" and "Error: TEXT [IDENTIFIER]". Exit status: 0 on
success (warnings included), 1 when the operation failed, 2 for a command line that
cannot be run.
)";

constexpr const char* kZip =
    R"(Usage: tqarchive zip ARCHIVE INPUT... [-C DIR] [--password [P] | --password-file F]
                     [--encryption METHOD]

Packs files and folders into a new zip archive (an existing ARCHIVE is replaced).

Entry names are the inputs' paths relative to the root folder DIR (default: the current
folder), with "/" separators. Relative INPUTs are taken relative to DIR, as with tar -C;
ARCHIVE is taken relative to the current folder. An INPUT outside DIR is refused
(error tqarchive:inputOutsideRoot) and nothing is written; give a -C that contains every
input instead. INPUT "." (or DIR itself) packs the contents of DIR without an entry for
DIR.

A folder becomes its own entry ("name/") followed by everything beneath it, in sorted
order. An input listed twice, or reached twice through folders, is stored once; the
archive itself is never packed into itself. Symbolic links are followed (the entry holds
what the link points to); a link that leads back into a folder containing it is reported
(warning tqarchive:symlinkLoop) and left out, as are broken links and special files such
as pipes and devices.

Options:
  -C DIR                 root folder of the entry names (default: the current folder)
  --password P           encrypt every entry with password P. A password given on the
                         command line is visible to other users of this machine (for
                         example in 'ps'); prefer --password-file or the prompt.
  --password             without a value (last on the line, or before another option):
                         ask for the password on the terminal, without echo
  --password-file F      read the password from the first line of file F (the line end
                         is not part of it); F may be /dev/stdin
  --encryption METHOD    zipcrypt (also: traditional), aes128 or aes256. Default with a
                         password: aes256. zipcrypt is weak; use it only for old readers.

Examples:
  tqarchive zip photos.zip holiday            # holiday/ and everything beneath it
  tqarchive zip site.zip . -C public_html     # the contents of public_html
  tqarchive zip secret.zip report.pdf --password-file ~/.zip-password
  tqarchive zip old.zip notes.txt --password --encryption zipcrypt
)";

constexpr const char* kTar = R"(Usage: tqarchive tar ARCHIVE INPUT... [-C DIR]

Packs files and folders into a new tar archive (an existing ARCHIVE is replaced). The
format follows ARCHIVE's name: .tgz and .tar.gz give a gzip-compressed tar, .tar a plain
tar; any other name (.tar.xz, .tar.bz2, .tar.zst, ...) is left to libarchive, which
chooses the format and compression by the name's extension.

Entry names, -C, folders, duplicates and symbolic links work as for 'tqarchive zip'
(see 'tqarchive zip --help'); an INPUT outside DIR is refused.

Options:
  -C DIR    root folder of the entry names (default: the current folder)

Examples:
  tqarchive tar backup.tgz Documents
  tqarchive tar src.tar.xz . -C project
)";

constexpr const char* kSafety = R"(
Before anything is written, the entry headers are read once (data skipped) and the
archive is refused (error tqarchive:unsafeEntryPath, nothing extracted) when an entry
would land outside the output folder: a name with a ".." component, a hard link to an
absolute name or through "..", an entry at or beneath a symbolic link that an earlier
entry of the same archive creates, or any hard link when OUTDIR is not the current folder
(its target would be looked up from the current folder; extract such archives with -d .
from inside the output folder). Absolute entry names ("/etc/x") are safe: they are
re-rooted under the output folder (OUTDIR/etc/x). Symbolic links already present in
OUTDIR are yours and are not checked. --unsafe-paths skips this check.
)";

constexpr const char* kUnzip =
    R"(Usage: tqarchive unzip ARCHIVE [-d OUTDIR] [--password [P] | --password-file F]
                       [--unsafe-paths] [ENTRY...]

Extracts a zip archive into OUTDIR (default: the current folder), or only the ENTRY
names given (as stored, folders with their trailing "/"). Existing files are replaced.
With a password, the first entry is test-read before anything is written, so a wrong
password is reported with the output folder untouched.
)";

constexpr const char* kUnzipOptions = R"(
Options:
  -d OUTDIR              output folder (created when missing)
  --password P           the archive's password. A password given on the command line is
                         visible to other users of this machine (for example in 'ps').
  --password             without a value: ask for it on the terminal, without echo
  --password-file F      read the password from the first line of file F
  --unsafe-paths         extract even entries that would land outside OUTDIR

Examples:
  tqarchive unzip photos.zip -d photos
  tqarchive unzip secret.zip --password-file ~/.zip-password
  tqarchive unzip photos.zip holiday/beach.jpg -d .
)";

constexpr const char* kUntar =
    R"(Usage: tqarchive untar ARCHIVE [-d OUTDIR] [--unsafe-paths] [ENTRY...]

Extracts a tar archive (plain or compressed: .tar, .tgz, .tar.gz, .tar.xz, ...) into
OUTDIR (default: the current folder), or only the ENTRY names given (as stored).
Existing files are replaced.
)";

constexpr const char* kUntarOptions = R"(
Options:
  -d OUTDIR        output folder (created when missing)
  --unsafe-paths   extract even entries that would land outside OUTDIR

Examples:
  tqarchive untar backup.tgz -d restore
  tqarchive untar src.tar.xz README.md
)";

constexpr const char* kGzip = R"(Usage: tqarchive gzip INPUT... [-d OUTDIR]

Compresses each file to a gzip file named after it with ".gz" added (report.txt gives
report.txt.gz), beside the input or in OUTDIR; the input is kept, an existing output is
replaced. A folder compresses every file beneath it (files already ending in ".gz" are
left alone); with -d its files keep their place under OUTDIR/FOLDERNAME/. Two inputs that
would give the same output file are refused (tqarchive:duplicateOutput).

Options:
  -d OUTDIR   where the gzip files go (created when missing)

Examples:
  tqarchive gzip access.log
  tqarchive gzip logs -d compressed
)";

constexpr const char* kGunzip = R"(Usage: tqarchive gunzip INPUT... [-d OUTDIR]

Decompresses each gzip file to its name without the last extension (a.txt.gz gives
a.txt, b.tgz gives b), beside the input or in OUTDIR; the input is kept, an existing
output is replaced. A folder decompresses every file ending in ".gz" beneath it; with -d
its files keep their place under OUTDIR/FOLDERNAME/.

Options:
  -d OUTDIR   where the decompressed files go (created when missing)

Examples:
  tqarchive gunzip access.log.gz
  tqarchive gunzip compressed -d logs
)";

}  // namespace

std::string helpText(const std::string& command) {
    if (command == "zip") {
        return kZip;
    }
    if (command == "tar") {
        return kTar;
    }
    if (command == "unzip") {
        return std::string(kUnzip) + kSafety + kUnzipOptions;
    }
    if (command == "untar") {
        return std::string(kUntar) + kSafety + kUntarOptions;
    }
    if (command == "gzip") {
        return kGzip;
    }
    if (command == "gunzip") {
        return kGunzip;
    }
    return kOverview;
}

}  // namespace tqarchive
