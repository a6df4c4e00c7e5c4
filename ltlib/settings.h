// Settings by their types: a layer over the registry's public interface.
#ifndef LTLIB_SETTINGS_H
#define LTLIB_SETTINGS_H

#include "ltlib/settings/changes.h"
#include "ltlib/settings/description.h"
#include "ltlib/settings/error.h"
#include "ltlib/settings/group.h"
#include "ltlib/settings/key.h"
#include "ltlib/settings/transaction.h"
#include "ltlib/settings/value.h"
#include "ltlib/settings/walk.h"

#endif  // LTLIB_SETTINGS_H
