#include "CommandDocs.hpp"

#include <algorithm>

namespace tqarchive {

namespace {

const std::vector<OptionDoc> kOptions = {
    {OptionId::Root,
     "-C",
     "DIR",
     ValueKind::Folder,
     {},
     "Root folder of the entry names (default: the current folder). Relative INPUTs are "
     "taken relative to it."},
    {OptionId::Output,
     "-d",
     "OUTDIR",
     ValueKind::Folder,
     {},
     "Output folder (default: the current folder; created when missing)."},
    {OptionId::Password,
     "--password",
     "P",
     ValueKind::None,
     {},
     "The password. Without a value (last on the line, or before another option) it is asked "
     "for on the terminal, without echo. A password given on the command line can be seen by "
     "other users of this machine (for example with ps); prefer the prompt or "
     "--password-file."},
    {OptionId::PasswordFile,
     "--password-file",
     "F",
     ValueKind::File,
     {},
     "Read the password from the first line of file F (without its line end); F may be "
     "/dev/stdin."},
    {OptionId::Encryption,
     "--encryption",
     "METHOD",
     ValueKind::Choice,
     {"aes256", "aes128", "zipcrypt", "traditional"},
     "aes256 (the default with a password), aes128, or zipcrypt (also: traditional), which "
     "is weak: use it only for readers that know nothing else."},
    {OptionId::Exclude,
     "--exclude",
     "PATTERN",
     ValueKind::None,
     {},
     "Leave out every file and folder whose path relative to DIR, or whose own name, matches "
     "the shell pattern (*, ?, [...]), as tar's --exclude does; a folder left out takes "
     "everything beneath it along. May be given more than once."},
    {OptionId::Level,
     "--level",
     "N",
     ValueKind::Choice,
     {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"},
     "Compression level, from 0 (fastest; zip stores without compression) to 9 (smallest); "
     "-0 to -9 are short for it. Default: the format's own."},
    {OptionId::Format,
     "--format",
     "TYPE",
     ValueKind::Choice,
     {"tar", "tgz", "tar.gz", "tar.bz2", "tar.xz", "tar.zst", "tar.lz4", "tar.lzma", "tar.lz",
      "tar.Z"},
     "The archive type when ARCHIVE's name does not say it (always when ARCHIVE is -): an "
     "extension without the name, such as tar.gz or tar.zst."},
    {OptionId::Stdout,
     "-c,--stdout",
     "",
     ValueKind::None,
     {},
     "Write to standard output instead of files; inputs are kept."},
    {OptionId::KeepExisting,
     "-k,--keep-existing",
     "",
     ValueKind::None,
     {},
     "Leave files that already exist alone (a warning each). Without it, existing files are "
     "replaced."},
    {OptionId::PreservePermissions,
     "-p,--preserve-permissions",
     "",
     ValueKind::None,
     {},
     "Keep set-user-ID, set-group-ID and sticky bits and group and other write permission, "
     "as a root restoring its own backup wants; the path, link and device rules stay on. "
     "Risk: a set-user-ID program from the archive runs with its owner's rights."},
    {OptionId::UnsafePaths,
     "--unsafe-paths",
     "",
     ValueKind::None,
     {},
     "Turn off the path, link, device and permission rules: entries are written wherever "
     "their names and links lead. Risk: an archive from someone else can then overwrite any "
     "file you can write, outside OUTDIR too. Safe writes and the cleanup after a failure "
     "stay on."},
    {OptionId::Json,
     "--json",
     "",
     ValueKind::None,
     {},
     "One JSON object per entry, one a line: name, type, size, compressedSize (zip only), "
     "modified (seconds since 1970 UTC), encrypted, mode (octal text), and linkTarget for "
     "links. Bytes of a name that are not UTF-8 appear as \\udcXX."},
    {OptionId::Log,
     "--log",
     "FILE",
     ValueKind::File,
     {},
     "Append the library's diagnostic log to FILE."},
    {OptionId::Quiet,
     "-q,--quiet",
     "",
     ValueKind::None,
     {},
     "Print neither the names written nor progress; only warnings and errors."},
    {OptionId::Verbose,
     "-v,--verbose",
     "",
     ValueKind::None,
     {},
     "List each name on standard error as it is processed."},
    {OptionId::Help, "-h,--help", "", ValueKind::None, {}, "Show this help and exit."},
    {OptionId::Version,
     "--version",
     "",
     ValueKind::None,
     {},
     "Show the version of tqarchive, libarchive and its codecs, and exit."},
};

const std::string kSafety =
    "Extraction is safe by default. An entry whose name or hard link would land outside OUTDIR "
    "(a \"..\" component, a link climbing out), or that would be written through a symbolic "
    "link, and a symbolic link pointing outside OUTDIR are refused as they are reached, and "
    "the run fails. Device files and FIFOs are skipped with a warning; set-user-ID, "
    "set-group-ID and sticky bits and group and other write permission are cleared; "
    "ownership is never changed. Absolute names are placed under OUTDIR (/etc/x becomes "
    "OUTDIR/etc/x). Files are written through a temporary file and renamed into place. When "
    "a run fails for any reason (a refused entry, a wrong password, damaged data, a full "
    "disk, Ctrl-C), everything it created is removed; files it replaced stay replaced.";

const std::string kSelection =
    "ENTRY selects what to extract: a name as stored, a folder with or without its \"/\" "
    "(everything beneath it), or a shell pattern (*, ?, [...]; * also matches \"/\"). Each "
    "ENTRY that matches nothing is reported after the rest is extracted, and the exit status "
    "is then 1.";

const std::string kReplace =
    "Existing files are replaced, each only once its new content is complete; give -k to "
    "keep them.";

const std::vector<CommandDoc> kCommands = {
    {"zip",
     "ARCHIVE INPUT...",
     "pack files and folders into a zip archive (optionally encrypted)",
     {"Packs files and folders into a new zip archive. The archive is written to a temporary "
      "file beside ARCHIVE and renamed over it only when complete, so a failure or Ctrl-C "
      "leaves an earlier ARCHIVE as it was. ARCHIVE - writes the archive to standard output.",
      "Entry names are the inputs' paths relative to the root folder DIR (-C, default: the "
      "current folder), with \"/\" separators; ARCHIVE is taken relative to the current "
      "folder. An INPUT outside DIR is refused: give a -C that contains every input. INPUT . "
      "packs the contents of DIR.",
      "A folder becomes its own entry (\"name/\") followed by everything beneath it, in "
      "sorted order. An input reached twice is stored once, and the archive never packs "
      "itself. Symbolic links are followed; a link back into a folder containing it, a broken "
      "link, and pipes, sockets and devices are left out with a warning. A file without "
      "owner-read permission is left out with a warning, even when run as root.",
      "With a password every file is encrypted with AES-256 unless --encryption says "
      "otherwise; a password typed at the prompt is asked for twice."},
     {{OptionId::Root, ""},
      {OptionId::Exclude, ""},
      {OptionId::Level, ""},
      {OptionId::Password, ""},
      {OptionId::PasswordFile, ""},
      {OptionId::Encryption, ""}},
     {{"zip photos.zip holiday", "holiday/ and everything beneath it"},
      {"zip site.zip . -C public_html", "the contents of public_html"},
      {"zip src.zip project --exclude '*.o' --exclude .git", "leave out objects and .git"},
      {"zip secret.zip report.pdf --password", "asks for the password twice"},
      {"zip - notes -9 > notes.zip", "to standard output, smallest"}}},
    {"tar",
     "ARCHIVE INPUT...",
     "pack files and folders into a tar archive, compressed as its name says",
     {"Packs files and folders into a new tar archive, written to a temporary file and "
      "renamed over ARCHIVE only when complete. The type follows ARCHIVE's name: .tar; .tgz "
      "or .tar.gz (gzip); .tbz, .tbz2 or .tar.bz2 (bzip2); .txz or .tar.xz (xz); .tzst or "
      ".tar.zst (zstd); .tar.lz4; .tar.lzma; .tlz or .tar.lz (lzip); .taz or .tar.Z "
      "(compress). Another name is refused before anything is written, unless --format gives "
      "the type. ARCHIVE - writes to standard output: a plain tar unless --format says "
      "otherwise.",
      "Entry names, -C, folders, links, duplicates and unreadable files are handled as by "
      "'tqarchive zip'."},
     {{OptionId::Root, ""},
      {OptionId::Exclude, ""},
      {OptionId::Level,
       "Compression level of the filter, from 0 (fastest) to 9 (smallest); "
       "-0 to -9 are short for it. A plain .tar has none."},
      {OptionId::Format, ""}},
     {{"tar backup.tgz Documents", ""},
      {"tar src.tar.zst . -C project --exclude build", "zstd, without build/"},
      {"tar - logs --format tar.xz | ssh host 'cat > logs.txz'", "to standard output"}}},
    {"unzip",
     "ARCHIVE [ENTRY...]",
     "extract a zip archive",
     {"Extracts a zip archive into OUTDIR, or only the ENTRY selected. ARCHIVE - reads the "
      "archive from standard input.",
      kSelection, kReplace, kSafety},
     {{OptionId::Output, ""},
      {OptionId::KeepExisting, ""},
      {OptionId::Password, ""},
      {OptionId::PasswordFile, ""},
      {OptionId::PreservePermissions, ""},
      {OptionId::UnsafePaths, ""}},
     {{"unzip photos.zip -d photos", ""},
      {"unzip photos.zip holiday/ -k", "holiday/ and beneath, keeping existing files"},
      {"unzip photos.zip '*.jpg' -d jpegs", ""},
      {"unzip secret.zip --password", "asks on the terminal, without echo"}}},
    {"untar",
     "ARCHIVE [ENTRY...]",
     "extract a tar archive, plain or compressed",
     {"Extracts a tar archive (plain or compressed: .tar, .tgz, .tar.gz, .tar.xz, .tar.zst, "
      "...) into OUTDIR, or only the ENTRY selected. ARCHIVE - reads the archive from "
      "standard input, whatever its compression.",
      kSelection, kReplace, kSafety},
     {{OptionId::Output, ""},
      {OptionId::KeepExisting, ""},
      {OptionId::PreservePermissions, ""},
      {OptionId::UnsafePaths, ""}},
     {{"untar backup.tgz -d restore", ""},
      {"untar src.tar.xz README.md docs", "one file and one folder"},
      {"untar - -d logs < logs.txz", "from standard input"}}},
    {"gzip",
     "INPUT...",
     "compress each file to FILE.gz",
     {"Compresses each file to a gzip file named after it with \".gz\" added, beside the "
      "input or in OUTDIR; the input is kept. The output is written to a temporary file and "
      "renamed into place only when complete, replacing an existing one. A folder "
      "compresses every file beneath it (files already ending in \".gz\" are left alone); "
      "with -d its files keep their place under OUTDIR/FOLDERNAME/. Two inputs that would "
      "write the same output are refused before anything is written.",
      "To decompress, use 'tqarchive gunzip': -d names the output folder here."},
     {{OptionId::Output, "Where the gzip files go (created when missing)."},
      {OptionId::Stdout,
       "Write the compressed data to standard output (several inputs give "
       "one stream of several members); no file is written."},
      {OptionId::Level,
       "Compression level, from 0 (fastest) to 9 (smallest); -0 to -9 are "
       "short for it. Default: 6."}},
     {{"gzip access.log", "access.log.gz"},
      {"gzip logs -d compressed -9", "compressed/logs/..."},
      {"gzip -c notes.txt > notes.txt.gz", ""}}},
    {"gunzip",
     "INPUT...",
     "decompress each FILE.gz",
     {"Decompresses each gzip file to its name without the last extension (a.txt.gz gives "
      "a.txt, b.tgz gives b), beside the input or in OUTDIR; the input is kept. Each "
      "member's CRC-32 and length are checked. The output is written to a temporary file and "
      "renamed into place only when complete, replacing an existing one. An input without an "
      "extension is refused, since its output would be the input itself. A folder "
      "decompresses every file ending in \".gz\" beneath it; with -d its files keep their "
      "place under OUTDIR/FOLDERNAME/."},
     {{OptionId::Output, "Where the decompressed files go (created when missing)."},
      {OptionId::Stdout,
       "Write the decompressed data to standard output; no file is "
       "written."}},
     {{"gunzip access.log.gz", ""},
      {"gunzip compressed -d logs", ""},
      {"gunzip -c data.csv.gz | head", ""}}},
    {"list",
     "ARCHIVE",
     "list the entries of an archive",
     {"Lists the entries of ARCHIVE (anything unzip and untar read) in archive order, one "
      "name a line, folders ending in \"/\". With -v each line also shows the type and "
      "permissions, the size, the compressed size (zip records it), the modification time "
      "and whether the entry is encrypted. ARCHIVE - reads standard input."},
     {{OptionId::Json, ""}, {OptionId::Password, ""}, {OptionId::PasswordFile, ""}},
     {{"list photos.zip", ""},
      {"list backup.tgz -v", "like tar -tv"},
      {"list backup.tgz --json", "for scripts"}}},
    {"test",
     "ARCHIVE",
     "check every entry of an archive or a .gz file",
     {"Reads every entry's data and checks it: zip CRCs and decryption, and each gzip "
      "member's CRC-32 and length (a .tgz, a .gz file). Each damaged entry is reported as an "
      "error naming it, and the exit status is then 1; a sound archive gives one line saying "
      "how many entries were checked. ARCHIVE - reads standard input."},
     {{OptionId::Password, ""}, {OptionId::PasswordFile, ""}},
     {{"test photos.zip", ""}, {"test backup.tgz", ""}, {"test access.log.gz", ""}}},
};

const std::vector<OptionId> kCommon = {OptionId::Log, OptionId::Quiet, OptionId::Verbose,
                                       OptionId::Help, OptionId::Version};

const std::vector<std::string> kOverview = {
    "Creates, extracts, lists and tests zip and tar archives (plain or compressed), and "
    "gzips and gunzips files, with libtqarchivecore.",
    "Standard output lists the names written, one a line, folders ending in \"/\" (nothing "
    "with --quiet); -v lists each name on standard error as it is processed, and on a "
    "terminal long work shows its progress there. Names are shown with control characters, "
    "backslashes and bytes that are not UTF-8 escaped (\\n, \\033, \\\\, \\351). Warnings "
    "and errors go to standard error as \"Warning: TEXT [IDENTIFIER]\" and \"Error: TEXT "
    "[IDENTIFIER]\"."};

const std::vector<ExitStatusDoc> kExitStatuses = {
    {0, "success, warnings included"},
    {1, "the operation failed, test found damage, or an ENTRY matched nothing"},
    {2, "the command line cannot be run (identifiers tqarchive:usage:*)"},
    {130, "interrupted by SIGINT (Ctrl-C); an earlier output file is left as it was"},
    {143, "stopped by SIGTERM, likewise"}};

}  // namespace

const std::vector<CommandDoc>& CommandDocs::commands() {
    return kCommands;
}

const CommandDoc* CommandDocs::find(std::string_view name) {
    const auto found =
        std::find_if(kCommands.begin(), kCommands.end(),
                     [&](const CommandDoc& command) { return command.name == name; });
    return found == kCommands.end() ? nullptr : &*found;
}

const std::vector<OptionDoc>& CommandDocs::options() {
    return kOptions;
}

const OptionDoc& CommandDocs::option(OptionId id) {
    return *std::find_if(kOptions.begin(), kOptions.end(),
                         [id](const OptionDoc& option) { return option.id == id; });
}

const std::vector<OptionId>& CommandDocs::common() {
    return kCommon;
}

std::vector<std::string> CommandDocs::spellings(const OptionDoc& option) {
    std::vector<std::string> result;
    if (option.id == OptionId::Level) {
        for (char digit = '0'; digit <= '9'; ++digit) {
            result.push_back(std::string("-") + digit);
        }
    }
    for (std::size_t start = 0; start <= option.names.size();) {
        const std::size_t comma = std::min(option.names.find(',', start), option.names.size());
        result.push_back(option.names.substr(start, comma - start));
        start = comma + 1;
    }
    return result;
}

std::string CommandDocs::synopsis(const OptionDoc& option) {
    std::string text = option.id == OptionId::Level ? "-0 ... -9, " : "";
    for (std::size_t at = 0; at < option.names.size(); ++at) {
        text += option.names[at] == ',' ? std::string(", ") : std::string(1, option.names[at]);
    }
    if (option.id == OptionId::Password) {
        return text + " [" + option.value + "]";
    }
    return option.value.empty() ? text : text + " " + option.value;
}

const std::vector<std::string>& CommandDocs::overview() {
    return kOverview;
}

const std::vector<ExitStatusDoc>& CommandDocs::exitStatuses() {
    return kExitStatuses;
}

}  // namespace tqarchive
