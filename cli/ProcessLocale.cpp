#include "ProcessLocale.hpp"

#include <langinfo.h>

#include <clocale>
#include <cstring>

namespace tqarchive {

namespace {

bool codesetIsUtf8() {
    const char* codeset = nl_langinfo(CODESET);
    return codeset != nullptr &&
           (std::strcmp(codeset, "UTF-8") == 0 || std::strcmp(codeset, "utf8") == 0);
}

}  // namespace

bool useUtf8Locale() {
    if (std::setlocale(LC_ALL, "") != nullptr && codesetIsUtf8()) {
        return true;
    }
    return std::setlocale(LC_ALL, "C.UTF-8") != nullptr && codesetIsUtf8();
}

}  // namespace tqarchive
