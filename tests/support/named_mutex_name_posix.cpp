#include <unistd.h>

#include "ltlib/foundation/uid.h"
#include "ltlib/platform/posix/lock_file.h"
#include "tests/support/named_mutex_name.h"

namespace LTLib::Testing {

MutexName::MutexName(const std::string& prefix, const std::string& suffix) {
  char id[37];
  UID::Generate().toString(id, sizeof id);
  m_text = prefix + id + suffix;
}

MutexName::~MutexName() {
  ::unlink(Platform::lockFilePath(m_text).c_str());
}

}  // namespace LTLib::Testing
