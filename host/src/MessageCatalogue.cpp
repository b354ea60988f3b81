#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include <host/HostError.hpp>
#include <host/TextConversion.hpp>

namespace tessel::host {

namespace {

using Entry = std::pair<std::string_view, std::string_view>;

constexpr std::string_view kDiskSpaceFull =
    "The disk is full: the archive '{1}' could not be written completely.";
constexpr std::string_view kOpenEntryError =
    "Unable to read '{1}'; it was left out of the archive.";

// Every message the host can show, in English: the only language the host ships, so any
// locale reads these texts. {n} is replaced by the n-th argument.
constexpr std::array kCatalogue{
    Entry{"TESSEL:io:archive:gzip:javaOpenError",
          "Unable to read '{1}' to compress it. Check that the file exists and that you have "
          "permission to read it."},
    Entry{"TESSEL:io:archive:gzip:javaOutputOpenError",
          "Unable to write the compressed file '{1}'. Check that the output folder exists and "
          "that you have permission to write to it."},
    Entry{"TESSEL:io:archive:gunzip:javaOpenError",
          "Unable to read the gzip file '{1}'. Check that the file exists and that you have "
          "permission to read it."},
    Entry{"TESSEL:io:archive:gunzip:javaOutputOpenError",
          "Unable to write the decompressed file '{1}'. Check that you have permission to write "
          "to the output folder and that no read-only file of that name is in the way."},
    Entry{"TESSEL:io:archive:gunzip:javaCopyStreamError",
          "Decompression failed because the gzip input is truncated or corrupt (output file: "
          "'{1}')."},
    Entry{"TESSEL:io:archive:gunzip:notGzipFormat",
          "'{1}' is not a gzip file, so it cannot be decompressed."},
    Entry{"TESSEL:io:archive:zip:openError",
          "Unable to create the zip archive '{1}'. Check that its folder exists and that you "
          "have permission to write to it."},
    Entry{"TESSEL:io:archive:tar:openError",
          "Unable to create the tar archive '{1}'. Check that its folder exists and that you "
          "have permission to write to it."},
    Entry{"TESSEL:io:archive:unzip:invalidZipFile",
          "Unable to read '{1}' as a zip archive. The file is missing, unreadable, corrupt or "
          "not a zip archive."},
    Entry{"TESSEL:io:archive:untar:invalidTarFile",
          "Unable to read '{1}' as a tar archive. The file is missing, unreadable, corrupt or "
          "not a tar archive."},
    Entry{"TESSEL:io:archive:createArchive:DiskSpaceFull", kDiskSpaceFull},
    Entry{"TESSEL:io:archive:zip:DiskSpaceFull", kDiskSpaceFull},
    Entry{"TESSEL:io:archive:tar:DiskSpaceFull", kDiskSpaceFull},
    Entry{"TESSEL:io:archive:createArchive:emptyPassword",
          "The password is empty. Give a password of at least one character, or create the "
          "archive without one."},
    Entry{"TESSEL:io:archive:createArchive:invalidArchiveFormat",
          "A password can only be used with the zip format."},
    Entry{"TESSEL:io:archive:createArchive:invalidEncryptionInLinux",
          "Unknown encryption method. Use 'zipcrypt' (also called 'traditional'), 'aes128' or "
          "'aes256'."},
    Entry{"TESSEL:io:archive:createArchive:unsupportedEncryptionInLinux",
          "This installation of libarchive cannot encrypt, so a password-protected archive "
          "cannot be created."},
    Entry{"TESSEL:io:archive:createArchive:invalidNumberOfArgs",
          "Wrong number of input arguments. To protect the archive with a password, give both "
          "the password and the encryption method."},
    Entry{"TESSEL:io:archive:createArchive:entryNameCountMismatch",
          "{1} files were given but {2} entry names. Give one entry name for each file."},
    Entry{"TESSEL:io:archive:createArchive:openEntryError", kOpenEntryError},
    Entry{"TESSEL:zip:openEntryError", kOpenEntryError},
    Entry{"TESSEL:tar:openEntryError", kOpenEntryError},
    Entry{"TESSEL:io:archive:extractArchive:unableToWrite",
          "Unable to extract the contents of '{1}': {2}"},
    Entry{"TESSEL:io:archive:extractArchive:emptyEntryFilename",
          "The {1} archive '{2}' holds an entry with an empty name, which cannot be extracted."},
    Entry{"TESSEL:io:archive:extractArchive:incorrectPassword", "The password is incorrect."},
    Entry{"TESSEL:io:archive:extractArchive:protectedEntry",
          "The entry is password protected and no password was given."},
    Entry{"TESSEL:io:archive:extractArchive:outputDiskFull",
          "The disk is full: the extracted files could not be written completely."},
    Entry{"TESSEL:io:archive:extractArchive:unsupportedEncryptionInLinux",
          "This installation of libarchive cannot decrypt, so password-protected entries "
          "cannot be extracted."},
    Entry{"TESSEL:io:archive:extractArchive:OverwriteOpenFile",
          "'{1}' is in use and cannot be replaced. Close it and try again."},
    Entry{"TESSEL:io:archive:extractArchive:internalError",
          "An internal error occurred while processing the archive."},
    Entry{"TESSEL:io:archive:extractArchive:unableToCreate",
          "Unable to create '{1}'. Check that you have permission to write to the output "
          "folder. The entry was skipped."},
    Entry{"TESSEL:io:archive:extractArchive:unableToOverwrite",
          "'{1}' already exists and is read-only, so it was kept and the entry was not "
          "extracted."},
    Entry{"TESSEL:io:archive:extractArchive:removeControlM",
          "A trailing carriage return was removed from the entry name '{1}'."},
    Entry{"TESSEL:host:tooManyOutputs", "Too many output arguments."},
    Entry{"TESSEL:host:tooManyInputs", "Too many input arguments."},
    Entry{"TESSEL:host:tooFewInputs", "Not enough input arguments."},
    Entry{"TESSEL:host:expectedString", "Expected a text input, but got {1}."},
    Entry{"TESSEL:host:expectedStringArray",
          "Expected a text or a list of texts as input, but got {1}."},
    Entry{"TESSEL:host:expectedLogical", "Expected a logical input, but got {1}."},
    Entry{"TESSEL:host:expectedCell", "Expected a cell array of texts as input, but got {1}."},
    // The tqarchive command-line host.
    Entry{"tqarchive:unsafeEntryPath",
          "The archive '{1}' holds the entry '{2}', which would be written outside the output "
          "folder: {3}. Nothing was extracted. Give --unsafe-paths to extract it anyway."},
    Entry{"tqarchive:archiveNotFound", "The archive '{1}' does not exist or is not a file."},
    Entry{"tqarchive:inputNotFound", "Unable to find the input '{1}': {2}."},
    Entry{"tqarchive:inputOutsideRoot",
          "The input '{1}' is outside the root folder '{2}', so it has no entry name. Give a -C "
          "folder that contains every input."},
    Entry{"tqarchive:rootFolder", "The root folder '{1}' given with -C is not a folder."},
    Entry{"tqarchive:symlinkLoop",
          "'{1}' is a symbolic link that leads back into a folder containing it; it was left "
          "out."},
    Entry{"tqarchive:brokenLink", "'{1}' is a broken symbolic link ({2}); it was left out."},
    Entry{"tqarchive:unsupportedFileType",
          "'{1}' is not a regular file or folder (a pipe, socket or device); it was left out."},
    Entry{"tqarchive:unreadableFolder",
          "Unable to list the folder '{1}' ({2}); its contents were left out."},
    Entry{"tqarchive:duplicateOutput",
          "'{2}' and '{3}' would both be written to '{1}'. Nothing was written; give them "
          "separately or choose another output folder."},
    Entry{"tqarchive:outputFolder", "Unable to create the output folder '{1}': {2}."},
    Entry{"tqarchive:passwordFile", "Unable to read the password file '{1}': {2}."},
    Entry{"tqarchive:usage:missingCommand",
          "No command given. Use zip, tar, unzip, untar, gzip or gunzip."},
    Entry{"tqarchive:usage:unknownCommand",
          "Unknown command '{1}'. Use zip, tar, unzip, untar, gzip or gunzip."},
    Entry{"tqarchive:usage:unknownOption", "Unknown option '{1}'."},
    Entry{"tqarchive:usage:optionNotAllowed", "The option '{1}' cannot be used with '{2}'."},
    Entry{"tqarchive:usage:missingValue", "The option '{1}' needs a value."},
    Entry{"tqarchive:usage:unexpectedValue", "The option '{1}' takes no value."},
    Entry{"tqarchive:usage:missingOperand", "'{2}' needs {1}."},
    Entry{"tqarchive:usage:conflictingOptions", "Give either {1} or {2}, not both."},
    Entry{"tqarchive:usage:encryptionWithoutPassword",
          "--encryption needs a password: add --password or --password-file."},
    Entry{"tqarchive:usage:passwordNeedsTerminal",
          "--password without a value asks on the terminal, but standard input is not a "
          "terminal. Give the password as --password-file FILE (FILE may be /dev/stdin)."},
};

const std::string_view* findText(const std::string& identifier) {
    const auto found = std::find_if(kCatalogue.begin(), kCatalogue.end(),
                                    [&](const Entry& entry) { return entry.first == identifier; });
    return found == kCatalogue.end() ? nullptr : &found->second;
}

// Replaces each {n} that has an n-th argument; anything else is copied as written, so a
// placeholder without its argument stays visible.
std::string fillPlaceholders(std::string_view text, const std::vector<MessageArgument>& arguments) {
    std::string result;
    result.reserve(text.size());
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t open = text.find('{', at);
        const std::size_t close = open == std::string_view::npos ? open : text.find('}', open);
        if (close == std::string_view::npos) {
            result.append(text.substr(at));
            break;
        }
        const std::string_view digits = text.substr(open + 1, close - open - 1);
        // At most four digits, so the position cannot overflow.
        const bool numeric =
            !digits.empty() && digits.size() <= 4 &&
            std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
        std::size_t position = 0;
        if (numeric) {
            for (const char c : digits) {
                position = position * 10 + static_cast<std::size_t>(c - '0');
            }
        }
        result.append(text.substr(at, open - at));
        if (numeric && position >= 1 && position <= arguments.size()) {
            result.append(argumentText(arguments[position - 1]));
            at = close + 1;
        } else {
            result.push_back('{');
            at = open + 1;
        }
    }
    return result;
}

std::string unknownIdentifierText(const std::string& identifier,
                                  const std::vector<MessageArgument>& arguments) {
    std::string text = "Unknown message identifier '" + identifier + "'";
    if (arguments.empty()) {
        return text + " (no arguments)";
    }
    text += " (arguments: ";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        text += (i == 0 ? "" : ", ") + argumentText(arguments[i]);
    }
    return text + ")";
}

}  // namespace

std::string lookupMessageUtf8(const std::string& identifier,
                              const std::vector<MessageArgument>& arguments) {
    const std::string_view* text = findText(identifier);
    return text ? fillPlaceholders(*text, arguments) : unknownIdentifierText(identifier, arguments);
}

std::u16string lookupMessage(const std::string& identifier,
                             const std::vector<MessageArgument>& arguments) {
    return fromUtf8(lookupMessageUtf8(identifier, arguments));
}

bool catalogueHas(const std::string& identifier) {
    return findText(identifier) != nullptr;
}

std::vector<std::string> catalogueIdentifiers() {
    std::vector<std::string> identifiers;
    identifiers.reserve(kCatalogue.size());
    for (const Entry& entry : kCatalogue) {
        identifiers.emplace_back(entry.first);
    }
    return identifiers;
}

}  // namespace tessel::host
