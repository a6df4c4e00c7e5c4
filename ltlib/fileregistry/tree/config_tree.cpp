// Nodes know their children, their parent and their place; what finds them quickly lies in NodeList.
#include "ltlib/fileregistry/tree/config_tree.h"

#include <utility>
#include <vector>

void QSCfgDataField::setValue(const std::string& /*text*/) {}

namespace {

// Never destroyed: a late caller may still hold the reference.
const std::string& emptyText() {
  static const auto* const s_text = new std::string;
  return *s_text;
}

// Made when the library comes in: the child of a fork that crossed with a first use would wait for
// the making to end.
const std::string& s_madeAtLoad = emptyText();

}  // namespace

const std::string& QSCfgDataField::getValue() const {
  return emptyText();
}

// A tree can be as deep as its file says, so that its end must not recurse; and it may come while
// an exception for want of memory passes, so that it must not ask for any.
QSCfgDataSection::~QSCfgDataSection() {
  for (QSCfgDataSection* at = this; at != this || sectionCount() != 0;) {
    if (at->sectionCount() != 0) {
      at = &at->m_subsections.last();
    } else {
      at = at->m_parent;
      at->m_subsections.dropLast();
    }
  }
}

QSCfgDataSection& QSCfgDataSection::addSection(std::string_view name) {
  return adoptSection(std::make_unique<QSCfgDataSection>(name));
}

QSCfgDataSection& QSCfgDataSection::findOrAddSection(std::string_view name) {
  QSCfgDataSection* found = findSection(name);
  return found != nullptr ? *found : addSection(name);
}

QSCfgDataSection& QSCfgDataSection::adoptSection(std::unique_ptr<QSCfgDataSection> section) {
  QSCfgDataSection& adopted = m_subsections.append(std::move(section));
  adopted.m_parent = this;
  return adopted;
}

bool QSCfgDataSection::removeSection(std::string_view name) {
  QSCfgDataSection* found = findSection(name);
  if (found == nullptr || found->sectionCount() != 0) {
    return false;
  }
  removeSection(*found);
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

void QSCfgDataSection::reserveFor(const QSCfgDataSection& other) {
  m_subsections.reserveFor(other.sectionCount());
  m_fields.reserveFor(other.fieldCount());
}

// After reserveFor nothing here can fail, so that a load comes in as a whole or not at all.
void QSCfgDataSection::takeOver(QSCfgDataSection& other) noexcept {
  for (std::unique_ptr<QSCfgDataSection>& child : other.releaseSections()) {
    adoptSection(std::move(child));
  }
  for (std::unique_ptr<QSCfgDataField>& field : other.releaseFields()) {
    addField(std::move(field));
  }
}
