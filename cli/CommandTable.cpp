#include "CommandTable.hpp"

#include <algorithm>

#include "Commands.hpp"

namespace tqarchive {

namespace {

const std::vector<Option> kOptions = {
    {.id = OptionId::Root,
     .names = "-C",
     .value = "DIR",
     .kind = ValueKind::Folder,
     .help = "Root folder of the entry names (default: the current folder). Relative INPUTs are "
             "taken relative to it.",
     .target = &CommandLine::rootFolder},
    {.id = OptionId::Output,
     .names = "-d",
     .value = "OUTDIR",
     .kind = ValueKind::Folder,
     .help = "Output folder (default: the current folder; created when missing).",
     .target = &CommandLine::outputFolder},
    {.id = OptionId::Password,
     .names = "--password",
     .value = "P",
     .help =
         "The password. Without a value (last on the line, or before another option) it is asked "
         "for on the terminal, without echo. A password given on the command line can be seen by "
         "other users of this machine (for example with ps); prefer the prompt or "
         "--password-file.",
     .target = &CommandLine::password,
     .valueOptional = true},
    {.id = OptionId::PasswordFile,
     .names = "--password-file",
     .value = "F",
     .kind = ValueKind::File,
     .help = "Read the password from the first line of file F (without its line end); F may be "
             "/dev/stdin.",
     .target = &CommandLine::passwordFile},
    {.id = OptionId::Encryption,
     .names = "--encryption",
     .value = "METHOD",
     .kind = ValueKind::Choice,
     .choices = {"aes256", "aes128", "zipcrypt", "traditional"},
     .help = "aes256 (the default with a password), aes128, or zipcrypt (also: traditional), which "
             "is weak: use it only for readers that know nothing else.",
     .target = &CommandLine::encryption},
    {.id = OptionId::Exclude,
     .names = "--exclude",
     .value = "PATTERN",
     .help =
         "Leave out every file and folder whose path relative to DIR, or whose own name, matches "
         "the shell pattern (*, ?, [...]), as tar's --exclude does; a folder left out takes "
         "everything beneath it along. May be given more than once.",
     .target = &CommandLine::excludes},
    {.id = OptionId::Level,
     .names = "--level",
     .value = "N",
     .kind = ValueKind::Choice,
     .choices = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"},
     .help = "Compression level, from 0 (fastest; zip stores without compression) to 9 (smallest); "
             "-0 to -9 are short for it. Default: the format's own.",
     .target = &CommandLine::level,
     .digitShorthands = true},
    {.id = OptionId::Format,
     .names = "--format",
     .value = "TYPE",
     .kind = ValueKind::Choice,
     .choices = {"tar", "tgz", "tar.gz", "tar.bz2", "tar.xz", "tar.zst", "tar.lz4", "tar.lzma",
                 "tar.lz", "tar.Z"},
     .help = "The archive type when ARCHIVE's name does not say it (always when ARCHIVE is -): an "
             "extension without the name, such as tar.gz or tar.zst.",
     .target = &CommandLine::format},
    {.id = OptionId::Stdout,
     .names = "-c,--stdout",
     .help = "Write to standard output instead of files; inputs are kept.",
     .target = &CommandLine::toStdout},
    {.id = OptionId::KeepExisting,
     .names = "-k,--keep-existing",
     .help =
         "Leave files that already exist alone (a warning each). Without it, existing files are "
         "replaced.",
     .target = &CommandLine::keepExisting},
    {.id = OptionId::StripComponents,
     .names = "--strip-components",
     .value = "N",
     .help = "Drop the first N folders of every entry's name (and hard-link target), as tar "
             "does: with 1, project-1.2/src/a.c is written as OUTDIR/src/a.c. Entries with no "
             "more than N components are not written. ENTRY names still match as stored.",
     .target = &CommandLine::stripComponents},
    {.id = OptionId::KeepOutwardLinks,
     .names = "--keep-outward-links",
     .help = "Restore symbolic links that point outside OUTDIR (cfg -> /etc/hostname, up -> "
             "../..) as stored, as restoring your own backup wants; without it each is skipped "
             "with a warning. Nothing is ever written through them. Risk: a program that later "
             "follows such a link from someone else's archive reads or writes outside OUTDIR.",
     .target = &CommandLine::keepOutwardLinks},
    {.id = OptionId::PreservePermissions,
     .names = "-p,--preserve-permissions",
     .help = "Keep set-user-ID, set-group-ID and sticky bits and group and other write permission, "
             "as a root restoring its own backup wants; the path, link and device rules stay on. "
             "Risk: a set-user-ID program from the archive runs with its owner's rights.",
     .target = &CommandLine::preservePermissions},
    {.id = OptionId::UnsafePaths,
     .names = "--unsafe-paths",
     .help =
         "Turn off the path, link, device and permission rules: entries are written wherever "
         "their names and links lead. Risk: an archive from someone else can then overwrite any "
         "file you can write, outside OUTDIR too. Safe writes and the cleanup after a failure "
         "stay on.",
     .target = &CommandLine::unsafePaths},
    {.id = OptionId::Json,
     .names = "--json",
     .help = "One JSON object per entry, one a line: name, type, size, compressedSize (zip only), "
             "modified (seconds since 1970 UTC), encrypted, mode (octal text), and linkTarget for "
             "links. Bytes of a name that are not UTF-8 appear as \\udcXX.",
     .target = &CommandLine::json},
    {.id = OptionId::Log,
     .names = "--log",
     .value = "FILE",
     .kind = ValueKind::File,
     .help = "Append the library's diagnostic log to FILE.",
     .target = &CommandLine::logFile},
    {.id = OptionId::Quiet,
     .names = "-q,--quiet",
     .help = "Print neither the names written nor progress; only warnings and errors.",
     .target = &CommandLine::quiet},
    {.id = OptionId::Verbose,
     .names = "-v,--verbose",
     .help = "List each name on standard error as it is processed.",
     .target = &CommandLine::verbose},
    {.id = OptionId::Help,
     .names = "-h,--help",
     .help = "Show this help and exit.",
     .target = &CommandLine::help},
    {.id = OptionId::Version,
     .names = "--version",
     .help = "Show the version of tqarchive, libarchive and its codecs, and exit.",
     .target = &CommandLine::version},
};

const std::string kSafety =
    "Extraction is safe by default. An entry whose name or hard link would land outside OUTDIR "
    "(a \"..\" component, a link climbing out), or that would be written through a symbolic "
    "link, is refused as it is reached, and the run fails. A symbolic link that would point "
    "outside OUTDIR from where it lands (a hard link to a symbolic link included) is skipped "
    "with a warning, unless --keep-outward-links is given. Device files and FIFOs are skipped "
    "with a warning; set-user-ID, set-group-ID and sticky bits and group and other write "
    "permission are cleared; ownership is never changed. Absolute names are placed under "
    "OUTDIR (/etc/x becomes OUTDIR/etc/x). Files are written through a temporary file and "
    "renamed into place. When a run fails for any reason (a refused entry, a wrong password, "
    "damaged data, a full disk, Ctrl-C), everything it created is removed; files it replaced "
    "stay replaced.";

const std::string kSelection =
    "ENTRY selects what to extract: a name as stored, a folder with or without its \"/\" "
    "(everything beneath it), or a shell pattern (*, ?, [...]; * also matches \"/\"). Each "
    "ENTRY that matches nothing is reported after the rest is extracted, and the exit status "
    "is then 1.";

const std::string kLeftOut =
    "An entry skipped for safety or that cannot be written (a folder you may not write, a "
    "name too long for the file system) is reported with a warning and the rest is "
    "extracted; a last line then says how many entries were not extracted, and the exit "
    "status is 1. Files kept by -k do not count.";

const std::string kReplace =
    "Existing files are replaced, each only once its new content is complete; give -k to "
    "keep them.";

const std::vector<Command> kCommands = {
    {.name = "zip",
     .action = Action::Create,
     .format = Format::Zip,
     .operands = {{"ARCHIVE", "INPUT"}, "INPUT"},
     .summary = "pack files and folders into a zip archive (optionally encrypted)",
     .description =
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
     .options = {{OptionId::Root, ""},
                 {OptionId::Exclude, ""},
                 {OptionId::Level, ""},
                 {OptionId::Password, ""},
                 {OptionId::PasswordFile, ""},
                 {OptionId::Encryption, ""}},
     .examples = {{"zip photos.zip holiday", "holiday/ and everything beneath it"},
                  {"zip site.zip . -C public_html", "the contents of public_html"},
                  {"zip src.zip project --exclude '*.o' --exclude .git",
                   "leave out objects and .git"},
                  {"zip secret.zip report.pdf --password", "asks for the password twice"},
                  {"zip - notes -9 > notes.zip", "to standard output, smallest"}},
     .run = createArchiveFromInputs},
    {.name = "tar",
     .action = Action::Create,
     .format = Format::Tar,
     .operands = {{"ARCHIVE", "INPUT"}, "INPUT"},
     .summary = "pack files and folders into a tar archive, compressed as its name says",
     .description =
         {"Packs files and folders into a new tar archive, written to a temporary file and "
          "renamed over ARCHIVE only when complete. The type follows ARCHIVE's name: .tar; .tgz "
          "or .tar.gz (gzip); .tbz, .tbz2 or .tar.bz2 (bzip2); .txz or .tar.xz (xz); .tzst or "
          ".tar.zst (zstd); .tar.lz4; .tar.lzma; .tlz or .tar.lz (lzip); .taz or .tar.Z "
          "(compress). Another name is refused before anything is written, unless --format gives "
          "the type. ARCHIVE - writes to standard output: a plain tar unless --format says "
          "otherwise.",
          "Entry names, -C, folders, links, duplicates and unreadable files are handled as by "
          "'tqarchive zip'."},
     .options = {{OptionId::Root, ""},
                 {OptionId::Exclude, ""},
                 {OptionId::Level,
                  "Compression level of the filter, from 0 (fastest) to 9 (smallest); "
                  "-0 to -9 are short for it. A plain .tar has none."},
                 {OptionId::Format, ""}},
     .examples = {{"tar backup.tgz Documents", ""},
                  {"tar src.tar.zst . -C project --exclude build", "zstd, without build/"},
                  {"tar - logs --format tar.xz | ssh host 'cat > logs.txz'", "to standard output"}},
     .run = createArchiveFromInputs},
    {.name = "unzip",
     .action = Action::Extract,
     .format = Format::Zip,
     .operands = {{"ARCHIVE"}, "ENTRY"},
     .summary = "extract a zip archive",
     .description =
         {"Extracts a zip archive into OUTDIR, or only the ENTRY selected. ARCHIVE - reads the "
          "archive from standard input.",
          kSelection, kReplace, kSafety, kLeftOut},
     .options = {{OptionId::Output, ""},
                 {OptionId::KeepExisting, ""},
                 {OptionId::StripComponents, ""},
                 {OptionId::KeepOutwardLinks, ""},
                 {OptionId::Password, ""},
                 {OptionId::PasswordFile, ""},
                 {OptionId::PreservePermissions, ""},
                 {OptionId::UnsafePaths, ""}},
     .examples = {{"unzip photos.zip -d photos", ""},
                  {"unzip photos.zip holiday/ -k", "holiday/ and beneath, keeping existing files"},
                  {"unzip photos.zip '*.jpg' -d jpegs", ""},
                  {"unzip secret.zip --password", "asks on the terminal, without echo"}},
     .run = extractArchiveToFolder},
    {.name = "untar",
     .action = Action::Extract,
     .format = Format::Tar,
     .operands = {{"ARCHIVE"}, "ENTRY"},
     .summary = "extract a tar archive, plain or compressed",
     .description =
         {"Extracts a tar archive (plain or compressed: .tar, .tgz, .tar.gz, .tar.xz, .tar.zst, "
          "...) into OUTDIR, or only the ENTRY selected. ARCHIVE - reads the archive from "
          "standard input, whatever its compression.",
          kSelection, kReplace, kSafety, kLeftOut},
     .options = {{OptionId::Output, ""},
                 {OptionId::KeepExisting, ""},
                 {OptionId::StripComponents, ""},
                 {OptionId::KeepOutwardLinks, ""},
                 {OptionId::PreservePermissions, ""},
                 {OptionId::UnsafePaths, ""}},
     .examples = {{"untar backup.tgz -d restore", ""},
                  {"untar src.tar.xz README.md docs", "one file and one folder"},
                  {"untar - -d logs < logs.txz", "from standard input"}},
     .run = extractArchiveToFolder},
    {.name = "gzip",
     .action = Action::Compress,
     .format = Format::Gzip,
     .operands = {{"INPUT"}, "INPUT"},
     .summary = "compress each file to FILE.gz",
     .description =
         {"Compresses each file to a gzip file named after it with \".gz\" added, beside the "
          "input or in OUTDIR; the input is kept. The output is written to a temporary file and "
          "renamed into place only when complete, replacing an existing one. A folder "
          "compresses every file beneath it (files already ending in \".gz\" are left alone); "
          "with -d its files keep their place under OUTDIR/FOLDERNAME/. Two inputs that would "
          "write the same output are refused before anything is written.",
          "To decompress, use 'tqarchive gunzip': -d names the output folder here."},
     .options = {{OptionId::Output, "Where the gzip files go (created when missing)."},
                 {OptionId::Stdout,
                  "Write the compressed data to standard output (several inputs give "
                  "one stream of several members); no file is written."},
                 {OptionId::Level,
                  "Compression level, from 0 (fastest) to 9 (smallest); -0 to -9 are "
                  "short for it. Default: 6."}},
     .examples = {{"gzip access.log", "access.log.gz"},
                  {"gzip logs -d compressed -9", "compressed/logs/..."},
                  {"gzip -c notes.txt > notes.txt.gz", ""}},
     .run = runGzipBatch},
    {.name = "gunzip",
     .action = Action::Decompress,
     .format = Format::Gzip,
     .operands = {{"INPUT"}, "INPUT"},
     .summary = "decompress each FILE.gz",
     .description =
         {"Decompresses each gzip file to its name without the last extension (a.txt.gz gives "
          "a.txt, b.tgz gives b), beside the input or in OUTDIR; the input is kept. Each "
          "member's CRC-32 and length are checked. The output is written to a temporary file and "
          "renamed into place only when complete, replacing an existing one. An input without an "
          "extension is refused, since its output would be the input itself. A folder "
          "decompresses every file ending in \".gz\" beneath it; with -d its files keep their "
          "place under OUTDIR/FOLDERNAME/."},
     .options = {{OptionId::Output, "Where the decompressed files go (created when missing)."},
                 {OptionId::Stdout,
                  "Write the decompressed data to standard output; no file is "
                  "written."}},
     .examples = {{"gunzip access.log.gz", ""},
                  {"gunzip compressed -d logs", ""},
                  {"gunzip -c data.csv.gz | head", ""}},
     .run = runGzipBatch},
    {.name = "list",
     .action = Action::List,
     .format = Format::AsNamed,
     .operands = {{"ARCHIVE"}, ""},
     .summary = "list the entries of an archive",
     .description =
         {"Lists the entries of ARCHIVE (anything unzip and untar read) in archive order, one "
          "name a line, folders ending in \"/\". With -v each line also shows the type and "
          "permissions, the size, the compressed size (zip records it), the modification time "
          "and whether the entry is encrypted. ARCHIVE - reads standard input."},
     .options = {{OptionId::Json, ""}, {OptionId::Password, ""}, {OptionId::PasswordFile, ""}},
     .examples = {{"list photos.zip", ""},
                  {"list backup.tgz -v", "like tar -tv"},
                  {"list backup.tgz --json", "for scripts"}},
     .run = listArchiveEntries},
    {.name = "test",
     .action = Action::Test,
     .format = Format::AsNamed,
     .operands = {{"ARCHIVE"}, ""},
     .summary = "check every entry of an archive or a .gz file",
     .description =
         {"Reads every entry's data and checks it: zip CRCs and decryption, and each gzip "
          "member's CRC-32 and length (a .tgz, a .gz file). Each damaged entry is reported as an "
          "error naming it, and the exit status is then 1; a sound archive gives one line saying "
          "how many entries were checked. ARCHIVE - reads standard input."},
     .options = {{OptionId::Password, ""}, {OptionId::PasswordFile, ""}},
     .examples = {{"test photos.zip", ""}, {"test backup.tgz", ""}, {"test access.log.gz", ""}},
     .run = testArchiveEntries},
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
    {1,
     "the operation failed, test found damage, an ENTRY matched nothing, or an entry was "
     "not extracted (skipped for safety or not writable; see the warnings)"},
    {2, "the command line cannot be run (identifiers tqarchive:usage:*)"},
    {130, "interrupted by SIGINT (Ctrl-C); an earlier output file is left as it was"},
    {143, "stopped by SIGTERM, likewise"}};

}  // namespace

const std::vector<Command>& CommandTable::commands() {
    return kCommands;
}

const Command* CommandTable::find(std::string_view name) {
    const auto found = std::find_if(kCommands.begin(), kCommands.end(),
                                    [&](const Command& command) { return command.name == name; });
    return found == kCommands.end() ? nullptr : &*found;
}

const std::vector<Option>& CommandTable::options() {
    return kOptions;
}

const Option& CommandTable::option(OptionId id) {
    return *std::find_if(kOptions.begin(), kOptions.end(),
                         [id](const Option& option) { return option.id == id; });
}

const std::vector<OptionId>& CommandTable::common() {
    return kCommon;
}

std::vector<std::string> CommandTable::names(const Option& option) {
    std::vector<std::string> result;
    for (std::size_t start = 0; start <= option.names.size();) {
        const std::size_t comma = std::min(option.names.find(',', start), option.names.size());
        result.push_back(option.names.substr(start, comma - start));
        start = comma + 1;
    }
    return result;
}

std::vector<std::string> CommandTable::spellings(const Option& option) {
    std::vector<std::string> result;
    if (option.digitShorthands) {
        for (char digit = '0'; digit <= '9'; ++digit) {
            result.push_back(std::string("-") + digit);
        }
    }
    for (std::string& name : names(option)) {
        result.push_back(std::move(name));
    }
    return result;
}

std::string CommandTable::synopsis(const Option& option) {
    std::string text = option.digitShorthands ? "-0 ... -9, " : "";
    for (std::size_t at = 0; at < option.names.size(); ++at) {
        text += option.names[at] == ',' ? std::string(", ") : std::string(1, option.names[at]);
    }
    if (option.valueOptional) {
        return text + " [" + option.value + "]";
    }
    return option.value.empty() ? text : text + " " + option.value;
}

std::string CommandTable::synopsis(const Operands& operands) {
    std::string text;
    for (const std::string& operand : operands.required) {
        text += (text.empty() ? "" : " ") + operand;
    }
    if (operands.more.empty()) {
        return text;
    }
    if (!operands.required.empty() && operands.more == operands.required.back()) {
        return text + "...";
    }
    return text + " [" + operands.more + "...]";
}

const std::vector<std::string>& CommandTable::overview() {
    return kOverview;
}

const std::vector<ExitStatusDoc>& CommandTable::exitStatuses() {
    return kExitStatuses;
}

}  // namespace tqarchive
