# The Debian package (cpack -G DEB in a build folder): everything `cmake --install`
# installs, the program, the libraries, the headers, the CMake package, the pkg-config
# file and, when generated, the man page and the bash completion. Its runtime
# dependencies (libarchive, the Boost libraries linked, the C++ runtime) are read from
# the binaries by dpkg-shlibdeps.
set(CPACK_PACKAGE_NAME tqarchivecore)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Archive commands (zip, tar, gzip) for a numeric computing host, on libarchive")
set(CPACK_PACKAGE_DESCRIPTION
    "libtqarchivecore packs files and folders into zip (optionally encrypted), tar and \
compressed tar archives, unpacks them, and gzips and gunzips single files, reporting \
failures as message-identified errors and warnings. The package holds the library, the \
stand-alone host platform libtqhost, their headers, CMake package and pkg-config file, \
and the tqarchive command-line program.")
set(CPACK_PACKAGE_CONTACT "tqarchivecore maintainers <maintainers@users.noreply.c-seed-30e13c56.example>")
set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# A shlibs file and the ldconfig trigger for the two shared libraries.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# For building against it: the pkg-config file names libarchive under Requires.private,
# and a public host header that includes Boost needs Boost's headers.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "libarchive-dev")
if(TQHOST_PUBLIC_BOOST)
    string(APPEND CPACK_DEBIAN_PACKAGE_SUGGESTS ", libboost-log-dev")
endif()

include(CPack)
