// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_CONTEXT_H
#define NB_CONTEXT_H

#include <cstdint>
#include <string>

#include "nubis_export.h"

namespace Nubis {
/// What a caller passes along with one call; shared by pointer with the call, which hands it back to the callback.
///
/// The library only reads it, while it builds the request: on the caller's thread, or for NBDatabase::DeleteRecords on
/// the worker. It has no lock of its own: set it up before the call and leave it alone until the call has returned, or
/// until the callback of DeleteRecords.
class NUBIS_EXPORT NBContext {
public:
    ///@{
    /// Identifies the request in the service's logs; empty lets the library make one where the request needs one.
    void SetRequestTraceId(const std::string &requestTraceId);
    std::string GetRequestTraceId() const;
    ///@}

    ///@{
    /// Identifies the user action to which several requests belong.
    void SetPrepareTarceId(const std::string &prepareTraceId);
    std::string GetPrepareTarceId() const;
    ///@}

    ///@{
    /// The download that the call belongs to; 0 when none was set.
    void SetDownloadId(int64_t downloadId);
    int64_t GetDownloadId() const;
    ///@}

private:
    std::string requestTraceId_;
    std::string prepareTraceId_;
    int64_t downloadId_ = 0;
};
} // namespace Nubis

#endif // NB_CONTEXT_H
