// Bytes that stay where they are as long as the tree whose names and texts they are.
//
// A store file is read into blocks of it, and the fields point there: no text is copied, and what a
// load brings lies in the order in which a walk or a save comes by.
#ifndef LTLIB_FILEREGISTRY_TREE_TEXT_STORE_H
#define LTLIB_FILEREGISTRY_TREE_TEXT_STORE_H

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace LTLib::detail {

class TextStore {
 public:
  /// Bytes without a value.
  [[nodiscard]] char* newBlock(std::size_t size);

  /// A copy of the text.
  [[nodiscard]] std::string_view keep(std::string_view text);

 private:
  std::vector<std::unique_ptr<char[]>> m_blocks;
  char* m_free = nullptr;  // where the next copy goes
  std::size_t m_room = 0;
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_TEXT_STORE_H
