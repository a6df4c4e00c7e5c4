#include "ltreg/cli/json.h"

#include <nlohmann/json.hpp>

namespace ltreg {

using Value = nlohmann::ordered_json;

Json::Json() : m_value(std::make_unique<Value>()) {}
Json::Json(const char* text) : m_value(std::make_unique<Value>(text)) {}
Json::Json(const std::string& text) : m_value(std::make_unique<Value>(text)) {}
Json::Json(const std::vector<std::string>& texts) : m_value(std::make_unique<Value>(texts)) {}
Json::Json(std::uint64_t number) : m_value(std::make_unique<Value>(number)) {}
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(Json&& other) noexcept = default;
Json::~Json() = default;

Json Json::array() {
  Json empty;
  *empty.m_value = Value::array();
  return empty;
}

void Json::push(Json element) {
  m_value->push_back(std::move(*element.m_value));
}

Json Json::first() && {
  Json element;
  *element.m_value = std::move(m_value->front());
  return element;
}

Json Json::with(const char* name, Json value) && {
  (*m_value)[name] = std::move(*value.m_value);
  return std::move(*this);
}

std::string Json::text() const {
  return m_value->dump(2, ' ', false, Value::error_handler_t::replace);
}

std::string Json::line() const {
  return m_value->dump(-1, ' ', false, Value::error_handler_t::replace);
}

}  // namespace ltreg
