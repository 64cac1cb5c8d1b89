// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_LOG_CAPTURE_H
#define NUBIS_TEST_LOG_CAPTURE_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "hilog/log.h"
#include "host/log_level.h"

namespace NubisTest {
// Collects what the process logs, of every level, while it exists. One at a time; any thread may log.
class LogCapture {
public:
    LogCapture() : formerLevel_(Host::GetLogLevel())
    {
        Sink &sink = GetSink();
        std::lock_guard<std::mutex> lock(sink.mutex);
        sink.lines.clear();
        Host::SetLogLevel(LOG_DEBUG);
        LOG_SetCallback(&LogCapture::Collect);
    }

    ~LogCapture()
    {
        LetGo();
        LOG_SetCallback(nullptr);
        Host::SetLogLevel(formerLevel_);
    }

    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    // The texts of one level since the last call, in order, without the place that stands before each.
    std::vector<std::string> Take(LogLevel level)
    {
        Sink &sink = GetSink();
        std::lock_guard<std::mutex> lock(sink.mutex);
        std::vector<std::string> texts;
        for (const auto &[lineLevel, text] : sink.lines) {
            if (lineLevel == level) {
                texts.push_back(WithoutPlace(text));
            }
        }
        sink.lines.clear();
        return texts;
    }

    std::vector<std::string> TakeErrors()
    {
        return Take(LOG_ERROR);
    }

    // Waits until a text that ends like this was logged since the last Take; false when it does not come.
    bool WaitFor(const std::string &end)
    {
        Sink &sink = GetSink();
        std::unique_lock<std::mutex> lock(sink.mutex);
        return sink.added.wait_for(lock, std::chrono::seconds(30), [&]() {
            for (const auto &line : sink.lines) {
                if (EndsWith(line.second, end)) {
                    return true;
                }
            }
            return false;
        });
    }

    // Threads that log a text that ends like this stay in the call until LetGo.
    void Hold(const std::string &end)
    {
        Sink &sink = GetSink();
        std::lock_guard<std::mutex> lock(sink.mutex);
        sink.held = end;
    }

    void LetGo()
    {
        Sink &sink = GetSink();
        std::lock_guard<std::mutex> lock(sink.mutex);
        sink.held.clear();
        sink.letGo.notify_all();
    }

private:
    struct Sink {
        std::mutex mutex;
        std::condition_variable added;
        std::vector<std::pair<LogLevel, std::string>> lines;
        std::condition_variable letGo;
        // Empty: none.
        std::string held;
    };

    static Sink &GetSink()
    {
        static Sink *sink = new Sink;
        return *sink;
    }

    static void Collect(const LogType, const LogLevel level, const unsigned int, const char *, const char *message)
    {
        Sink &sink = GetSink();
        std::unique_lock<std::mutex> lock(sink.mutex);
        sink.lines.emplace_back(level, message);
        sink.added.notify_all();
        sink.letGo.wait(lock, [&]() { return sink.held.empty() || !EndsWith(message, sink.held); });
    }

    static bool EndsWith(const std::string &text, const std::string &end)
    {
        return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
    }

    static std::string WithoutPlace(const std::string &text)
    {
        size_t end = text.find("()} ");
        return text.rfind('{', 0) == 0 && end != std::string::npos ? text.substr(end + 4) : text;
    }

    LogLevel formerLevel_;
};
} // namespace NubisTest

#endif // NUBIS_TEST_LOG_CAPTURE_H
