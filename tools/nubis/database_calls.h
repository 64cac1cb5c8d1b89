// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DATABASE_CALLS_H
#define NUBIS_TOOL_DATABASE_CALLS_H

#include <future>
#include <memory>
#include <string>
#include <utility>

#include "nb_context.h"
#include "nubis_async.h"

namespace NubisTool {

namespace Async = Nubis::Async;

// Of a call that belongs to the user action of this id; empty when there is none.
std::shared_ptr<Nubis::NBContext> ContextOf(const std::string &prepareTraceId);

// What became of one record of a call: its own result's error, else the call's; a record that the service did not answer
// for has an error, too.
Nubis::NBError ErrorFor(
    const Nubis::NBResultMap &results, const Nubis::NBError &callError, const std::string &recordId);
Nubis::NBError ErrorFor(const Async::RecordsResult &outcome, const std::string &recordId);

// A future whose promise was dropped is a failure of the connection, too.
template <typename Outcome>
Outcome Wait(std::future<Outcome> future)
{
    try {
        return future.get();
    } catch (const std::future_error &) {
        Outcome outcome;
        outcome.error.SetLocalError(Nubis::NB_LOCAL_IPC_FAILED);
        return outcome;
    }
}

template <typename Outcome>
Outcome Wait(Async::Operation<Outcome> operation)
{
    return Wait(std::move(operation).Start());
}

} // namespace NubisTool

#endif
