// The engine behind the expansion of %NAME% references, apart from any table.
//
// The leftmost reference goes first, and the reading goes on at the start of what replaced it, so
// that a '%' left in a replacement pairs with whatever '%' follows it. Since nothing in front of
// that place holds a '%', this is the same as starting over from the beginning of the text, at a
// cost that is linear in all that is read and written.
#ifndef LTLIB_VARIABLES_EXPANSION_H
#define LTLIB_VARIABLES_EXPANSION_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/variables/variable_report.h"

namespace LTLib::detail {

/// Where the replacements come from.
class ReplacementSource {
 public:
  /// Whether a name has one replacement throughout. A reference inside its own replacement is
  /// then a proof of a cycle, and what a name expands to need be worked out only once.
  virtual bool isFixed() const = 0;

  /// Points `replacement` at the text for `name`, valid until the next call; false when the name
  /// is not defined. May throw; the text under expansion then keeps what was replaced so far.
  virtual bool find(std::string_view name, std::string_view& replacement) = 0;

 protected:
  ~ReplacementSource() = default;
};

/// What an expansion may come to.
struct ExpansionLimits {
  std::size_t size = std::size_t{256} << 20;  // of the text, if it was no longer at the start
  std::size_t replacements = 10'000'000;      // a known expansion that is repeated counts as one
  std::size_t noted = std::size_t{16} << 20;  // bytes of steps behind which no more are noted
};

/// How often a name may lie inside its own replacement where the source is not fixed: an answer
/// that changes from call to call can end what looks like a cycle.
inline constexpr std::size_t kDeepestRepetition = 10000;

/// Replaces every reference in `text`: 0, or 0x80004005 with the replacements made so far left in
/// place. With `steps`, each replacement is noted there.
[[nodiscard]] QSResult expandReferences(std::string& text, ReplacementSource& source,
                                        std::vector<ExpansionStep>* steps = nullptr,
                                        ExpansionLimits limits = {});

}  // namespace LTLib::detail

#endif  // LTLIB_VARIABLES_EXPANSION_H
