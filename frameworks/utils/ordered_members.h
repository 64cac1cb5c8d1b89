// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_ORDERED_MEMBERS_H
#define NUBIS_ORDERED_MEMBERS_H

#include <cstddef>
#include <string_view>

#include <json/value.h>

namespace Nubis {
// Finds members of an object in one walk over all of them, for whoever reads most members of many objects. Belongs to one
// thread; the value must outlive it and not change.
class OrderedMembers {
public:
    // A value that is no object has no members.
    explicit OrderedMembers(const Json::Value &json)
        : next_(json.isObject() ? json.begin() : json.end()), end_(json.end())
    {}

    // The name of a member of an object; lives as long as the value.
    static std::string_view NameOf(const Json::Value::const_iterator &member)
    {
        const char *end = nullptr;
        const char *name = member.memberName(&end);
        return std::string_view(name, static_cast<size_t>(end - name));
    }

    // Null when there is no such member. Names must be asked for in ascending order.
    const Json::Value *Find(std::string_view name)
    {
        int order = -1;
        while (next_ != end_ && (order = NameOf(next_).compare(name)) < 0) {
            ++next_;
        }
        return next_ != end_ && order == 0 ? &*next_ : nullptr;
    }

private:
    Json::Value::const_iterator next_;
    const Json::Value::const_iterator end_;
};
} // namespace Nubis

#endif // NUBIS_ORDERED_MEMBERS_H
