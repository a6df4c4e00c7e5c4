#include "ltlib/component/shared_object.h"

iqsSharedObject::~iqsSharedObject() = default;

QSSharedObject::~QSSharedObject() {
  m_refCount = -1;
}
