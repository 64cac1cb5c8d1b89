// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_context.h"

namespace Nubis {
void NBContext::SetRequestTraceId(const std::string &requestTraceId)
{
    requestTraceId_ = requestTraceId;
}

std::string NBContext::GetRequestTraceId() const
{
    return requestTraceId_;
}

void NBContext::SetPrepareTarceId(const std::string &prepareTraceId)
{
    prepareTraceId_ = prepareTraceId;
}

std::string NBContext::GetPrepareTarceId() const
{
    return prepareTraceId_;
}

void NBContext::SetDownloadId(int64_t downloadId)
{
    downloadId_ = downloadId;
}

int64_t NBContext::GetDownloadId() const
{
    return downloadId_;
}
} // namespace Nubis
