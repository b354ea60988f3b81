#pragma once

// The stand-alone host platform, all of it, without Boost: an embedder that attaches a
// Boost.Log sink to the diagnostic channel includes host/LogAttributes.hpp as well.
#include <host/DiagnosticLogger.hpp>
#include <host/FileSystemError.hpp>
#include <host/HostError.hpp>
#include <host/HostInternalException.hpp>
#include <host/HostPath.hpp>
#include <host/MessageArgument.hpp>
#include <host/MessageIdError.hpp>
#include <host/TextConversion.hpp>
#include <host/WarningCapture.hpp>
#include <host/hxArray.hpp>
