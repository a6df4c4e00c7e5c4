#include "tests/support/temp_folder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace fs = std::filesystem;

namespace LTLib::Testing {

TempFolder::TempFolder() {
  std::random_device random;
  do {
    m_path = (fs::temp_directory_path() / ("ltlib_test_" + std::to_string(random()))).string();
  } while (!fs::create_directory(m_path));
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

std::string TempFolder::path(const std::string& name) const {
  return (fs::path(m_path) / name).make_preferred().string();
}

std::string TempFolder::name() const {
  return fs::path(m_path).filename().string();
}

std::vector<std::string> TempFolder::names() const {
  std::vector<std::string> found;
  for (const fs::directory_entry& entry : fs::directory_iterator(m_path)) {
    found.push_back(entry.path().filename().string());
  }
  std::sort(found.begin(), found.end());
  return found;
}

std::string TempFolder::write(const std::string& name, const std::string& text) const {
  std::ofstream(path(name), std::ios::binary) << text;
  return path(name);
}

std::string readFile(const std::string& path) {
  std::ifstream file(path);
  if (!file) {
    return "<cannot be read: " + path + ">";
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace LTLib::Testing
