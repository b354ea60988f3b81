#pragma once

// Every message-identified error and warning class of the library.
#include <archive/core/error/messages/createArchive.hpp>
#include <archive/core/error/messages/extractArchive.hpp>
#include <archive/core/error/messages/gunzip.hpp>
#include <archive/core/error/messages/gzip.hpp>
#include <archive/core/error/messages/tar.hpp>
#include <archive/core/error/messages/testArchive.hpp>
#include <archive/core/error/messages/untar.hpp>
#include <archive/core/error/messages/unzip.hpp>
#include <archive/core/error/messages/zip.hpp>
