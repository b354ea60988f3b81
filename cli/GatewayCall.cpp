#include "GatewayCall.hpp"

namespace tqarchive {

using namespace tessel::host;

GatewayCall& GatewayCall::text(const std::u16string& value) {
    inputs_.emplace_back(createHostString(value));
    return *this;
}

GatewayCall& GatewayCall::list(const std::vector<std::u16string>& values) {
    inputs_.emplace_back(createHostStringArray(values));
    return *this;
}

GatewayCall& GatewayCall::flag(bool value) {
    inputs_.emplace_back(createHostLogical(value));
    return *this;
}

std::vector<std::u16string> GatewayCall::call(Gateway gateway) const {
    std::vector<const hxArray*> arguments;
    arguments.reserve(inputs_.size());
    for (const hxArrayPtr& input : inputs_) {
        arguments.push_back(input.get());
    }
    hxOutput output;
    gateway(1, &output, static_cast<int>(arguments.size()), arguments.data());
    return readHostCellStrings(output.get());
}

}  // namespace tqarchive
