#include "ltreg/registry/spare_root.h"

#include <algorithm>
#include <vector>

#include "ltreg/cli/failure.h"

namespace ltreg {
namespace {

std::vector<enumRegRoot>& spareRoots() {
  static std::vector<enumRegRoot> s_roots{REG_ROOT_CURRENT_USER, REG_ROOT_CURRENT_CONFIG,
                                          REG_ROOT_CLASSES_ROOT, REG_ROOT_USERS};
  return s_roots;
}

}  // namespace

void keepRoot(enumRegRoot root) {
  std::erase(spareRoots(), root);
}

enumRegRoot takeSpareRoot() {
  std::vector<enumRegRoot>& roots = spareRoots();
  if (roots.empty()) {
    throw Failure(ExitCode::kUsage, "so many store files cannot be looked at in one go");
  }
  const enumRegRoot root = roots.back();
  roots.pop_back();
  return root;
}

}  // namespace ltreg
