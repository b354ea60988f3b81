#include <algorithm>
#include <string>

#include <archive/core/archivecore.hpp>

namespace tessel::io::archive::core {

namespace {

struct Suffix {
    std::u16string_view suffix;  // lower case
    std::u16string_view format;
    std::u16string_view filter;
};

// Longest suffixes first, so ".tar.gz" is seen before ".gz".
constexpr Suffix kSuffixes[] = {
    {u".tar.gz", u"tgz", u""},      {u".tar.bz2", u"tar", u"bzip2"},
    {u".tar.xz", u"tar", u"xz"},    {u".tar.zst", u"tar", u"zstd"},
    {u".tar.lz4", u"tar", u"lz4"},  {u".tar.lzma", u"tar", u"lzma"},
    {u".tar.lz", u"tar", u"lzip"},  {u".tar.z", u"tar", u"compress"},
    {u".tgz", u"tgz", u""},         {u".tbz2", u"tar", u"bzip2"},
    {u".tbz", u"tar", u"bzip2"},    {u".txz", u"tar", u"xz"},
    {u".tzst", u"tar", u"zstd"},    {u".tlz", u"tar", u"lzip"},
    {u".taz", u"tar", u"compress"}, {u".tar", u"tar", u""},
    {u".zip", u"zip", u""},         {u".gz", u"gz", u""},
};

char16_t lower(char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
}

bool endsWith(std::u16string_view name, std::u16string_view suffix) {
    return name.size() > suffix.size() &&
           std::equal(suffix.rbegin(), suffix.rend(), name.rbegin(),
                      [](char16_t s, char16_t n) { return s == lower(n); });
}

}  // namespace

std::optional<ArchiveType> archiveTypeFromName(std::u16string_view name) {
    for (const Suffix& entry : kSuffixes) {
        if (endsWith(name, entry.suffix)) {
            return ArchiveType{std::u16string(entry.format), std::u16string(entry.filter)};
        }
    }
    return std::nullopt;
}

}  // namespace tessel::io::archive::core
