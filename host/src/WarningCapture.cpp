#include <host/WarningCapture.hpp>

namespace tessel::host {

namespace {
// Each thread has its own stack of captures, so a capture never sees another thread's
// warnings.
thread_local WarningCapture* innermostCapture = nullptr;
}  // namespace

WarningCapture::WarningCapture() : previous_(innermostCapture) {
    innermostCapture = this;
}

WarningCapture::~WarningCapture() {
    innermostCapture = previous_;
}

WarningCapture* WarningCapture::current() noexcept {
    return innermostCapture;
}

}  // namespace tessel::host
