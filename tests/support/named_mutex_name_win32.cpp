#include "ltlib/foundation/uid.h"
#include "tests/support/named_mutex_name.h"

namespace LTLib::Testing {

MutexName::MutexName(const std::string& prefix, const std::string& suffix) {
  char id[37];
  UID::Generate().toString(id, sizeof id);
  m_text = prefix + id + suffix;
}

// A mutex goes with its last handle.
MutexName::~MutexName() = default;

}  // namespace LTLib::Testing
