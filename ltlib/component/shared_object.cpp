#include "ltlib/component/shared_object.h"

iqsSharedObject::~iqsSharedObject() = default;

QSSharedObject::~QSSharedObject() {
  // For whoever looks at the count of an object that is gone: it never had this value alive.
  m_refCount = -1;
}
