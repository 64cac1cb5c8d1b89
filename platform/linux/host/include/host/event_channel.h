// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_EVENT_CHANNEL_H
#define HOST_EVENT_CHANNEL_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

// Texts by the name of an event, from any process of this machine's user to any other: how services push notifications
// where the platform has a system service for it. Everyone who listens to a name gets every text that is published under
// it from then on, in the order of each publisher.
//
// Each listener has a folder in the runtime folder, in which publishers leave texts until it reads them. So nothing is
// lost while a listener is busy or stopped, and no publisher waits for one. Folders of listeners that died are removed by
// those who publish next. Only processes of the same user get there.
namespace Host {

/// A listener that leaves so many texts unread gets no more until it has read some, and is told about the gap.
constexpr size_t MAX_UNREAD_EVENTS = 2048;
/// In bytes, of one text.
constexpr size_t MAX_EVENT_SIZE = size_t{1} << 24;

/// Listens to one event name in this process. Owned by whoever made it.
class EventListener {
public:
    ///@{
    /// The functions that a listener calls, see the constructor.
    using OnEvent = std::function<void(const std::string &text)>;
    using OnGap = std::function<void()>;
    ///@}

    /// Both are called on one thread of the listener's own, one call at a time, with no lock held: onEvent once for each
    /// text, onGap once in each place where texts are missing (see MAX_UNREAD_EVENTS). They may call anything, also end
    /// the listener. What they throw is logged and dropped. onGap may be empty.
    EventListener(int32_t userId, std::string eventName, OnEvent onEvent, OnGap onGap = {});
    /// Texts that were not read yet are dropped. Waits for a call that is under way, except inside of it; afterwards no
    /// more calls come.
    ~EventListener();
    EventListener(const EventListener &) = delete;
    EventListener &operator=(const EventListener &) = delete;

    /// Begins to listen; called once. What is published after it has returned arrives. False with a text in `error` when
    /// the name is not one of letters, digits, '.', '_' and '-' or the runtime folder cannot be used. A process may end
    /// while it listens.
    bool Start(std::string &error);

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

/// Gives the text to everyone who listens to the event name now; nobody is fine. Never waits for a listener. Any thread;
/// texts of one process arrive in the order of the calls. False with a text in `error` when somebody could not be given it,
/// which does not keep it from the others.
bool PublishEvent(int32_t userId, const std::string &eventName, const std::string &text, std::string &error);

} // namespace Host

#endif // HOST_EVENT_CHANNEL_H
