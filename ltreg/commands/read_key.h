// The key that a reading command looks into.
#ifndef LTREG_COMMANDS_READ_KEY_H
#define LTREG_COMMANDS_READ_KEY_H

#include <string>
#include <vector>

#include "ltreg/cli/json.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/session.h"

namespace ltreg {

class ReadKey {
 public:
  /// Opens the root of the request's key. Throws Failure if the key is not there.
  explicit ReadKey(const Request& request);

  [[nodiscard]] Session& session() { return m_session; }
  /// kStoreFailed once something could not be read.
  [[nodiscard]] ExitCode outcome() const;
  [[nodiscard]] const KeyArgument& key() const { return m_key; }
  [[nodiscard]] const std::string& path() const { return m_key.path; }
  [[nodiscard]] enumRegRoot root() const { return m_key.root; }
  [[nodiscard]] std::string name() const { return fullName(m_key.root, m_key.path); }

 private:
  KeyArgument m_key;
  Session m_session;
};

[[nodiscard]] Json jsonOf(const NamedValue& value);
[[nodiscard]] Json jsonOf(const std::vector<NamedValue>& values);

/// The line of a value: the type, the key if one is given, the name and the text.
[[nodiscard]] std::string lineOf(const NamedValue& value, const std::string& key = {});

}  // namespace ltreg

#endif  // LTREG_COMMANDS_READ_KEY_H
