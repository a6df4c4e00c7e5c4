// The whole public interface of the base library.
#ifndef LTLIB_LTLIB_H
#define LTLIB_LTLIB_H

#include "ltlib/component/class_report.h"
#include "ltlib/component/dll_loader.h"
#include "ltlib/component/instance_creation.h"
#include "ltlib/component/iqsunknown.h"
#include "ltlib/component/shared_object.h"
#include "ltlib/events/dispatcher.h"
#include "ltlib/events/event_service.h"
#include "ltlib/events/event_types.h"
#include "ltlib/export.h"
#include "ltlib/fileregistry/file_registry_manager.h"
#include "ltlib/fileregistry/store_check.h"
#include "ltlib/fileregistry/store_guard.h"
#include "ltlib/foundation/do_once.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/foundation/lt_string.h"
#include "ltlib/foundation/mutex.h"
#include "ltlib/foundation/named_mutex.h"
#include "ltlib/foundation/process_helpers.h"
#include "ltlib/foundation/rw_lock.h"
#include "ltlib/foundation/stream_format.h"
#include "ltlib/foundation/uid.h"
#include "ltlib/registry/reg_enum.h"
#include "ltlib/registry/reg_key.h"
#include "ltlib/registry/reg_value.h"
#include "ltlib/registry/registry_manager.h"
#include "ltlib/registry/win32_registry_manager.h"
#include "ltlib/variables/variable_manager.h"
#include "ltlib/variables/variable_report.h"

#endif  // LTLIB_LTLIB_H
