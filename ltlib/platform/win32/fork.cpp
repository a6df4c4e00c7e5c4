#include "ltlib/platform/fork.h"

namespace LTLib::Platform {

// There is no fork here, so that nobody is told of anything.
void SoleWork::begin() noexcept {}
void SoleWork::end() noexcept {}
SoleWork::~SoleWork() = default;
ForkedChildHook::ForkedChildHook(Forget forget) noexcept : m_forget(forget) {}

}  // namespace LTLib::Platform
