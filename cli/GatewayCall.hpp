#pragma once

#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>

namespace tqarchive {

// The host side of one builtin gateway call: owns the input arrays, calls the gateway
// with one output requested and reads the cell array it returns.
class GatewayCall {
  public:
    using Gateway = void (*)(int, hxOutput*, int, const tessel::host::hxArray**);

    GatewayCall& text(const std::u16string& value);
    GatewayCall& list(const std::vector<std::u16string>& values);
    GatewayCall& flag(bool value);

    std::vector<std::u16string> call(Gateway gateway) const;

  private:
    std::vector<tessel::host::hxArrayPtr> inputs_;
};

}  // namespace tqarchive
