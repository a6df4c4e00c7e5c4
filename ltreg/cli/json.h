// JSON under construction.
//
// All of the tool builds it through this class: the library that writes it takes seconds to compile
// in every file that includes it.
#ifndef LTREG_CLI_JSON_H
#define LTREG_CLI_JSON_H

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace ltreg {

class Json {
 public:
  Json();  // null
  Json(const char* text);
  Json(const std::string& text);
  Json(const std::vector<std::string>& texts);
  Json(std::uint64_t number);
  Json(Json&& other) noexcept;
  Json& operator=(Json&& other) noexcept;
  ~Json();

  [[nodiscard]] static Json array();
  /// Requires: this is an array.
  void push(Json element);

  /// The first element. Requires: this is an array and has one.
  [[nodiscard]] Json first() &&;

  /// The object with one more member at its end; null becomes an object.
  [[nodiscard]] Json with(const char* name, Json value) &&;

  /// Several lines of UTF-8, or one, with U+FFFD in place of bytes that are none.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] std::string line() const;

 private:
  std::unique_ptr<nlohmann::ordered_json> m_value;
};

}  // namespace ltreg

#endif  // LTREG_CLI_JSON_H
