#include <host/hxArray.hpp>

#include <atomic>
#include <stdexcept>

#include <host/MessageIdError.hpp>

namespace tessel::host {

class hxArray {
  public:
    explicit hxArray(hxClass kind) : kind_(kind) {}

    hxClass kind() const noexcept { return kind_; }
    std::vector<std::u16string>& texts() noexcept { return texts_; }
    const std::vector<std::u16string>& texts() const noexcept { return texts_; }
    std::vector<unsigned char>& logicals() noexcept { return logicals_; }
    const std::vector<unsigned char>& logicals() const noexcept { return logicals_; }
    double& number() noexcept { return number_; }

    void share() noexcept { holders_.fetch_add(1, std::memory_order_relaxed); }
    // Whether this was the last holder.
    bool release() noexcept { return holders_.fetch_sub(1, std::memory_order_acq_rel) == 1; }
    std::size_t holders() const noexcept { return holders_.load(std::memory_order_acquire); }

  private:
    hxClass kind_;
    std::vector<std::u16string> texts_;    // String (one), StringArray, Cell
    std::vector<unsigned char> logicals_;  // Logical
    double number_ = 0;                    // Double
    std::atomic<std::size_t> holders_{1};
};

namespace {

// How the received input is described in a wrong-class error.
const char* describe(const hxArray* array) {
    if (array == nullptr) {
        return "no value";
    }
    switch (array->kind()) {
        case hxClass::String:
            return "a text";
        case hxClass::StringArray:
            return "a list of texts";
        case hxClass::Logical:
            return "a logical array";
        case hxClass::Double:
            return "a number";
        case hxClass::Cell:
            return "a cell array";
    }
    return "an unknown value";
}

[[noreturn]] void raiseExpected(const char* mnemonic, const hxArray* received) {
    MessageIdError("TESSEL:host", mnemonic, {MessageArgument(std::string(describe(received)))})
        .raise();
}

bool is(const hxArray* array, hxClass kind) {
    return array != nullptr && array->kind() == kind;
}

}  // namespace

hxArray* createHostString(std::u16string text) {
    auto* array = new hxArray(hxClass::String);
    array->texts().push_back(std::move(text));
    return array;
}

hxArray* createHostStringArray(std::vector<std::u16string> texts) {
    auto* array = new hxArray(hxClass::StringArray);
    array->texts() = std::move(texts);
    return array;
}

hxArray* createHostLogical(bool value) {
    return createHostLogicals({value});
}

hxArray* createHostLogicals(std::vector<bool> values) {
    auto* array = new hxArray(hxClass::Logical);
    array->logicals().assign(values.begin(), values.end());
    return array;
}

hxArray* createHostDouble(double value) {
    auto* array = new hxArray(hxClass::Double);
    array->number() = value;
    return array;
}

hxArray* createHostCell(const std::vector<std::u16string>& texts) {
    auto* array = new hxArray(hxClass::Cell);
    array->texts() = texts;
    return array;
}

hxClass hostClassOf(const hxArray* array) {
    if (array == nullptr) {
        throw std::invalid_argument("hostClassOf: null host array");
    }
    return array->kind();
}

hxArray* shareHostArray(hxArray* array) {
    if (array != nullptr) {
        array->share();
    }
    return array;
}

void destroyHostArray(hxArray* array) {
    if (array != nullptr && array->release()) {
        delete array;
    }
}

std::size_t hostReferenceCount(const hxArray* array) {
    return array == nullptr ? 0 : array->holders();
}

std::u16string readHostString(const hxArray* array) {
    // A list holding exactly one text is that text.
    if (is(array, hxClass::String) ||
        (is(array, hxClass::StringArray) && array->texts().size() == 1)) {
        return array->texts().front();
    }
    raiseExpected("expectedString", array);
}

std::vector<std::u16string> readHostStringArray(const hxArray* array) {
    if (is(array, hxClass::String) || is(array, hxClass::StringArray) || is(array, hxClass::Cell)) {
        return array->texts();
    }
    raiseExpected("expectedStringArray", array);
}

std::vector<unsigned char> readHostLogicals(const hxArray* array) {
    if (is(array, hxClass::Logical)) {
        return array->logicals();
    }
    raiseExpected("expectedLogical", array);
}

std::vector<std::u16string> readHostCellStrings(const hxArray* array) {
    if (is(array, hxClass::Cell)) {
        return array->texts();
    }
    raiseExpected("expectedCell", array);
}

}  // namespace tessel::host
