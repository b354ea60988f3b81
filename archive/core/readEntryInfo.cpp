#include <archive/core/readEntryInfo.hpp>

#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

EntryType typeOf(::archive_entry* entry) {
    if (archive_entry_hardlink(entry) != nullptr) {
        return EntryType::HardLink;
    }
    switch (archive_entry_filetype(entry)) {
        case AE_IFREG:
            return EntryType::File;
        case AE_IFDIR:
            return EntryType::Folder;
        case AE_IFLNK:
            return EntryType::SymbolicLink;
        case AE_IFCHR:
            return EntryType::CharacterDevice;
        case AE_IFBLK:
            return EntryType::BlockDevice;
        case AE_IFIFO:
            return EntryType::Fifo;
        case AE_IFSOCK:
            return EntryType::Socket;
        default:
            return EntryType::Unknown;
    }
}

}  // namespace

EntryInfo readEntryInfo(::archive_entry* entry) {
    EntryInfo info;
    const char* name = archive_entry_pathname(entry);
    info.name = tessel::host::fromUtf8(name != nullptr ? name : "");
    info.type = typeOf(entry);
    // Folders read as folders wherever they are printed.
    if (info.type == EntryType::Folder && !info.name.ends_with(u'/')) {
        info.name.push_back(u'/');
    }
    if (archive_entry_size_is_set(entry)) {
        info.size = static_cast<std::uint64_t>(archive_entry_size(entry));
    }
    if (archive_entry_mtime_is_set(entry)) {
        info.modified = static_cast<std::int64_t>(archive_entry_mtime(entry));
    }
    info.encrypted = archive_entry_is_encrypted(entry) != 0;
    if (const char* target = archive_entry_hardlink(entry)) {
        info.linkTarget = tessel::host::fromUtf8(target);
    } else if (const char* link = archive_entry_symlink(entry)) {
        info.linkTarget = tessel::host::fromUtf8(link);
    }
    info.permissions = static_cast<std::uint32_t>(archive_entry_perm(entry));
    return info;
}

}  // namespace tessel::io::archive::core
