#include <archive/core/rethrowAsHostError.hpp>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/messages/extractArchive.hpp>
#include <host/HostError.hpp>

namespace tessel::io::archive::core {

void rethrowAsHostError() {
    try {
        throw;
    } catch (const tessel::host::HostError&) {
        throw;
    } catch (...) {
        // ArchiveException and everything else: the user sees one internal error.
        TESSEL::io::archive::extractArchive::internalError().raise();
    }
}

void rethrowAsHostError(const ArchiveException& failure) {
    try {
        throw failure;
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
