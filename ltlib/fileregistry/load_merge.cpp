#include "ltlib/fileregistry/load_merge.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/folded_name.h"

namespace LTLib::detail {
namespace {

struct Pair {
  QSCfgDataSection* from;
  QSCfgDataSection* to;
  std::string path;
};

// A line feed stands in no name that was read, so that it parts path and name.
std::string fieldKey(const std::string& path, const QSCfgDataField& field) {
  return path + '\n' + foldedName(field.name());
}

void takeFields(const Pair& pair, const QSCfgDelivered& delivered, QSCfgDelivered& counted) {
  for (std::unique_ptr<QSCfgDataField>& field : pair.from->releaseFields()) {
    const std::string key = fieldKey(pair.path, *field);
    const auto earlier = delivered.find(key);
    if (++counted[key] > (earlier != delivered.end() ? earlier->second : 0)) {
      pair.to->addField(std::move(field));
    }
  }
}

// Works level by level: the tree is as deep as the file says.
QSCfgDelivered takeAll(QSCfgDataSection& read, QSCfgDataSection& into,
                       const QSCfgDelivered& delivered) {
  QSCfgDelivered counted;
  std::vector<Pair> pending;
  pending.push_back({&read, &into, {}});
  while (!pending.empty()) {
    const Pair pair = std::move(pending.back());
    pending.pop_back();
    takeFields(pair, delivered, counted);
    for (std::size_t i = 0; i < pair.from->sectionCount(); ++i) {
      QSCfgDataSection& child = pair.from->sectionAt(i);
      pending.push_back({&child, &pair.to->findOrAddSection(child.name()),
                         pair.path + '\\' + foldedName(child.name())});
    }
  }
  return counted;
}

}  // namespace

void takeOverReading(QSCfgRoot& root, QSCfgDataSection& read, bool whole) {
  if (whole && root.delivered.empty() && root.section->sectionCount() == 0) {
    for (std::unique_ptr<QSCfgDataSection>& child : read.releaseSections()) {
      root.section->adoptSection(std::move(child));
    }
    return;
  }
  const QSCfgDelivered counted = takeAll(read, *root.section, root.delivered);
  if (whole) {
    root.delivered.clear();
    return;
  }
  for (const auto& [key, count] : counted) {
    std::size_t& most = root.delivered[key];
    most = std::max(most, count);
  }
}

}  // namespace LTLib::detail
