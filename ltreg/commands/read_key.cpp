#include "ltreg/commands/read_key.h"

#include "ltreg/cli/shown_text.h"

namespace ltreg {

ReadKey::ReadKey(const Request& request)
    : m_key(parseKey(*request.key)), m_session(request, m_key, Access::kRead) {
  if (!m_session.keyExists(m_key.path)) {
    m_session.throwAbsent("the key " + inQuotes(name()));
  }
}

ExitCode ReadKey::outcome() const {
  return m_session.sawAll() ? ExitCode::kDone : ExitCode::kStoreFailed;
}

Json jsonOf(const NamedValue& value) {
  return Json()
      .with("name", value.name)
      .with("type", typeWord(value.value))
      .with("value", jsonOf(value.value));
}

}  // namespace ltreg
