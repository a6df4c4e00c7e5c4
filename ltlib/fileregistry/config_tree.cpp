#include "ltlib/fileregistry/config_tree.h"

#include <utility>
#include <vector>

void QSCfgDataField::setValue(const std::string& /*text*/) {}

const std::string& QSCfgDataField::getValue() const {
  // Never destroyed: a late caller may still hold the reference.
  static const auto* const empty = new std::string;
  return *empty;
}

// A tree can be as deep as its file says, so its end must not recurse.
QSCfgDataSection::~QSCfgDataSection() {
  std::vector<std::unique_ptr<QSCfgDataSection>> doomed = releaseSections();
  while (!doomed.empty()) {
    const std::unique_ptr<QSCfgDataSection> next = std::move(doomed.back());
    doomed.pop_back();
    for (std::unique_ptr<QSCfgDataSection>& child : next->releaseSections()) {
      doomed.push_back(std::move(child));
    }
  }
}

QSCfgDataSection& QSCfgDataSection::addSection(std::string_view name) {
  return m_subsections.append(std::make_unique<QSCfgDataSection>(name));
}

QSCfgDataSection& QSCfgDataSection::findOrAddSection(std::string_view name) {
  QSCfgDataSection* found = findSection(name);
  return found != nullptr ? *found : addSection(name);
}

void QSCfgDataSection::adoptSection(std::unique_ptr<QSCfgDataSection> section) {
  m_subsections.append(std::move(section));
}

std::vector<std::unique_ptr<QSCfgDataSection>> QSCfgDataSection::releaseSections() {
  return m_subsections.releaseAll();
}

bool QSCfgDataSection::removeSection(std::string_view name) {
  QSCfgDataSection* found = findSection(name);
  if (found == nullptr || found->sectionCount() != 0) {
    return false;
  }
  m_subsections.take(*found);
  return true;
}

void QSCfgDataSection::addField(std::unique_ptr<QSCfgDataField> field) {
  m_fields.append(std::move(field));
}

bool QSCfgDataSection::removeField(std::string_view name) {
  QSCfgDataField* found = findField(name);
  if (found == nullptr) {
    return false;
  }
  m_fields.take(*found);
  return true;
}

bool QSCfgDataSection::clearFields() {
  if (sectionCount() != 0) {
    return false;
  }
  m_fields.clear();
  return true;
}
