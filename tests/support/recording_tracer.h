// A tracer that keeps every line for the tests that look at them.
#ifndef LTLIB_TESTS_SUPPORT_RECORDING_TRACER_H
#define LTLIB_TESTS_SUPPORT_RECORDING_TRACER_H

#include <string>
#include <vector>

namespace LTLib::Testing {

/// The lines of all threads since the last call: "detail file tag function text", with the detail 0
/// for a warning.
std::vector<std::string> takeTraces();

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_RECORDING_TRACER_H
