#include "ltreg/cli/json.h"

#include <nlohmann/json.hpp>

namespace ltreg {

using Node = nlohmann::ordered_json;

Json::Json() : m_value(std::make_unique<Node>()) {}
Json::Json(const char* text) : m_value(std::make_unique<Node>(text)) {}
Json::Json(const std::string& text) : m_value(std::make_unique<Node>(text)) {}
Json::Json(const std::vector<std::string>& texts) : m_value(std::make_unique<Node>(texts)) {}
Json::Json(std::uint64_t number) : m_value(std::make_unique<Node>(number)) {}
Json::Json(bool truth) : m_value(std::make_unique<Node>(truth)) {}
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(Json&& other) noexcept = default;
Json::~Json() = default;

Json Json::array() {
  Json empty;
  *empty.m_value = Node::array();
  return empty;
}

void Json::push(Json element) {
  m_value->push_back(std::move(*element.m_value));
}

Json Json::with(const char* name, Json value) && {
  (*m_value)[name] = std::move(*value.m_value);
  return std::move(*this);
}

std::string Json::text() const {
  return m_value->dump(2, ' ', false, Node::error_handler_t::replace);
}

std::string Json::line() const {
  return m_value->dump(-1, ' ', false, Node::error_handler_t::replace);
}

Json versionedJson(const char* name, Json value) {
  constexpr std::uint64_t kSchemaVersion = 1;
  return Json().with("version", kSchemaVersion).with(name, std::move(value));
}

}  // namespace ltreg
