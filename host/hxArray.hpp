#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tessel::host {

// A host array: a text, a list of texts, a logical flag array, a number, or a cell array
// of texts. Reference counted: holders share it, the last release destroys it.
class hxArray;

enum class hxClass { String, StringArray, Logical, Double, Cell };

hxArray* createHostString(std::u16string text);
hxArray* createHostStringArray(std::vector<std::u16string> texts);
hxArray* createHostLogical(bool value);
hxArray* createHostLogicals(std::vector<bool> values);
hxArray* createHostDouble(double value);
// A cell array holding one text per cell, in order.
hxArray* createHostCell(const std::vector<std::u16string>& texts);

hxClass hostClassOf(const hxArray* array);
// Another holder: raises the reference count and returns the array.
hxArray* shareHostArray(hxArray* array);
// Releases one holder; the last release destroys the array. A null array is ignored.
void destroyHostArray(hxArray* array);
// How many holders share the array.
std::size_t hostReferenceCount(const hxArray* array);

// Readers; an array of another class raises a message-identified error
// ("TESSEL:host:expectedString", "TESSEL:host:expectedStringArray",
// "TESSEL:host:expectedLogical", "TESSEL:host:expectedCell").
std::u16string readHostString(const hxArray* array);
// A text array or a single text (a list of one).
std::vector<std::u16string> readHostStringArray(const hxArray* array);
// The logical data as bytes, one per element (0 or 1).
std::vector<unsigned char> readHostLogicals(const hxArray* array);
std::vector<std::u16string> readHostCellStrings(const hxArray* array);

// Releases a host array held in an output slot.
struct hxArrayDeleter {
    void operator()(hxArray* array) const noexcept { destroyHostArray(array); }
};
using hxArrayPtr = std::unique_ptr<hxArray, hxArrayDeleter>;

// Refuses the argument arrays of a builtin call that a host got wrong, before any work:
// outputs asked for (nlhs > 0) without an output array ("TESSEL:host:nullOutputs"), inputs
// announced (nrhs > 0) without an input array ("TESSEL:host:nullInputs"). With nlhs 0 a
// null output array is fine: the builtin then stores nothing.
void checkBuiltinArrays(int nlhs, const hxArrayPtr* plhs, int nrhs, const hxArray* const* prhs);

// The host's standard argument-count errors; each raises and never returns.
[[noreturn]] void errorTooManyOutputs();
[[noreturn]] void errorTooManyInputs();
[[noreturn]] void errorTooFewInputs();

}  // namespace tessel::host
