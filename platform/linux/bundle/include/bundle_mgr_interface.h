// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_BUNDLE_MGR_INTERFACE_SHORT_PATH_H
#define OHOS_BUNDLE_MGR_INTERFACE_SHORT_PATH_H

#include "bundlemgr/bundle_mgr_interface.h"

#endif // OHOS_BUNDLE_MGR_INTERFACE_SHORT_PATH_H
