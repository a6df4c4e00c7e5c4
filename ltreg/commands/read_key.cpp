#include "ltreg/commands/read_key.h"

#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/absent.h"

namespace ltreg {

ReadKey::ReadKey(const Request& request)
    : m_key(parseKey(*request.key)), m_session(request, m_key, Access::kRead) {
  if (!m_session.keyExists(m_key.path)) {
    throwAbsentKey(m_session, m_key);
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

Json jsonOf(const std::vector<NamedValue>& values) {
  Json all = Json::array();
  for (const NamedValue& value : values) {
    all.push(jsonOf(value));
  }
  return all;
}

std::string lineOf(const NamedValue& value, const std::string& key) {
  return typeWord(value.value) + '\t' + (key.empty() ? key : escapeControls(key) + '\t') +
         escapeControls(value.name) + '\t' + onOneLine(value.value);
}

}  // namespace ltreg
