// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "database_calls.h"

namespace NubisTool {

std::shared_ptr<Nubis::NBContext> ContextOf(const std::string &prepareTraceId)
{
    auto context = std::make_shared<Nubis::NBContext>();
    context->SetPrepareTarceId(prepareTraceId);
    return context;
}

Nubis::NBError ErrorFor(const Nubis::NBResultMap &results, const Nubis::NBError &callError, const std::string &recordId)
{
    auto result = results.find(recordId);
    if (result != results.end()) {
        return result->second;
    }
    return callError.HasError() ? callError : Nubis::NBError(Nubis::NB_LOCAL_UNEXPECTED_REPLY);
}

Nubis::NBError ErrorFor(const Async::RecordsResult &outcome, const std::string &recordId)
{
    return ErrorFor(outcome.results, outcome.error, recordId);
}

} // namespace NubisTool
