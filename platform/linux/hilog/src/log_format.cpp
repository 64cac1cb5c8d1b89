// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <limits>
#include <string_view>
#include <sys/types.h>

#include "log_format.h"

namespace Host {
namespace {

// More would be cut anyway, and printf takes its time to pad to two thousand million characters.
constexpr int MAX_WIDTH = 4096;
constexpr int UNSET = std::numeric_limits<int>::min();
constexpr std::string_view PRIVATE_TEXT = "<private>";

enum class Length {
    NONE,
    CHAR,
    SHORT,
    LONG,
    LONG_LONG,
    INTMAX,
    SIZE,
    PTRDIFF,
    LONG_DOUBLE,
};

struct Conversion {
    bool isPublic = false;
    char flags[6] = "";
    int width = UNSET;
    int precision = UNSET;
    Length length = Length::NONE;
    char letter = '\0';
};

// A va_list that can be handed on by reference: whether the bare type can depends on the machine.
class Arguments {
public:
    explicit Arguments(va_list args)
    {
        va_copy(args_, args);
    }

    ~Arguments()
    {
        va_end(args_);
    }

    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;

    template <typename T>
    T Next()
    {
        return va_arg(args_, T);
    }

private:
    va_list args_;
};

class Formatter {
public:
    Formatter(char *out, size_t capacity, va_list args) : out_(out), capacity_(capacity), args_(args)
    {}

    size_t Run(const char *format)
    {
        const char *pos = format;
        while (*pos != '\0' && used_ + 1 < capacity_) {
            size_t plain = std::strcspn(pos, "%");
            Append({pos, plain});
            pos += plain;
            if (*pos == '\0') {
                break;
            }
            if (pos[1] == '%') {
                Append("%");
                pos += 2;
                continue;
            }
            Conversion conversion;
            const char *end = Parse(pos + 1, conversion);
            if (end == nullptr || !Convert(conversion)) {
                Append(pos);
                break;
            }
            pos = end;
        }
        out_[used_] = '\0';
        return used_;
    }

private:
    void Append(std::string_view text)
    {
        size_t size = std::min(text.size(), capacity_ - 1 - used_);
        std::memcpy(out_ + used_, text.data(), size);
        used_ += size;
    }

    // Reads one conversion from behind its percent sign; gives the place behind it, or null when it is malformed.
    const char *Parse(const char *pos, Conversion &conversion)
    {
        if (*pos == '{') {
            const char *close = std::strchr(pos, '}');
            if (close == nullptr) {
                return nullptr;
            }
            conversion.isPublic = HasWord({pos + 1, static_cast<size_t>(close - pos - 1)}, "public");
            pos = close + 1;
        }
        while (*pos != '\0' && std::strchr("-+ #0", *pos) != nullptr) {
            AddFlag(conversion, *pos++);
        }
        conversion.width = ParseNumber(pos);
        if (conversion.width < 0 && conversion.width != UNSET) {
            AddFlag(conversion, '-');
            conversion.width = -conversion.width;
        }
        if (*pos == '.') {
            ++pos;
            bool given = *pos == '*' || (*pos >= '0' && *pos <= '9');
            conversion.precision = given ? ParseNumber(pos) : 0;
            if (conversion.precision < 0) {
                conversion.precision = UNSET;
            }
        }
        conversion.length = ParseLength(pos);
        conversion.letter = *pos;
        return *pos == '\0' ? nullptr : pos + 1;
    }

    static bool HasWord(std::string_view list, std::string_view word)
    {
        while (!list.empty()) {
            size_t start = std::min(list.find_first_not_of(" ,"), list.size());
            list.remove_prefix(start);
            size_t size = std::min(list.find_first_of(" ,"), list.size());
            if (size > 0 && list.substr(0, size) == word) {
                return true;
            }
            list.remove_prefix(size);
        }
        return false;
    }

    static void AddFlag(Conversion &conversion, char flag)
    {
        if (std::strchr(conversion.flags, flag) == nullptr) {
            size_t used = std::strlen(conversion.flags);
            conversion.flags[used] = flag;
            conversion.flags[used + 1] = '\0';
        }
    }

    // A width or precision: digits, or a star for the next argument; UNSET when there is none.
    int ParseNumber(const char *&pos)
    {
        if (*pos == '*') {
            ++pos;
            return std::clamp(args_.Next<int>(), -MAX_WIDTH, MAX_WIDTH);
        }
        int number = UNSET;
        while (*pos >= '0' && *pos <= '9') {
            number = std::min(std::max(number, 0) * 10 + (*pos++ - '0'), MAX_WIDTH);
        }
        return number;
    }

    static Length ParseLength(const char *&pos)
    {
        struct Modifier {
            std::string_view text;
            Length length;
        };
        // Longer ones first.
        static constexpr Modifier MODIFIERS[] = {{"hh", Length::CHAR}, {"h", Length::SHORT}, {"ll", Length::LONG_LONG},
            {"l", Length::LONG}, {"q", Length::LONG_LONG}, {"j", Length::INTMAX}, {"z", Length::SIZE},
            {"t", Length::PTRDIFF}, {"L", Length::LONG_DOUBLE}};
        for (const auto &modifier : MODIFIERS) {
            if (std::strncmp(pos, modifier.text.data(), modifier.text.size()) == 0) {
                pos += modifier.text.size();
                return modifier.length;
            }
        }
        return Length::NONE;
    }

    // Takes the argument off the list, also when it is not to be shown. False for an unknown letter.
    bool Convert(const Conversion &conversion)
    {
        switch (conversion.letter) {
            case 'd':
            case 'i':
                Emit(conversion, "j", NextSigned(conversion.length));
                return true;
            case 'u':
            case 'o':
            case 'x':
            case 'X':
                Emit(conversion, "j", NextUnsigned(conversion.length));
                return true;
            case 'a':
            case 'A':
            case 'e':
            case 'E':
            case 'f':
            case 'F':
            case 'g':
            case 'G':
                if (conversion.length == Length::LONG_DOUBLE) {
                    Emit(conversion, "L", args_.Next<long double>());
                } else {
                    Emit(conversion, "", args_.Next<double>());
                }
                return true;
            case 'p':
                Emit(conversion, "", args_.Next<const void *>());
                return true;
            case 'n':
                // Writing to the caller's memory is not what a log is for.
                args_.Next<void *>();
                return true;
            case 'm':
                Emit(conversion, "", 0);
                return true;
            default:
                return ConvertText(conversion);
        }
    }

    bool ConvertText(Conversion conversion)
    {
        // printf reads a text to its end, also when there is room for its beginning only.
        if (conversion.letter == 's' && conversion.precision == UNSET) {
            conversion.precision = MAX_WIDTH;
        }
        bool wide = conversion.length == Length::LONG;
        switch (conversion.letter) {
            case 'c':
                if (wide) {
                    Emit(conversion, "l", args_.Next<wint_t>());
                } else {
                    Emit(conversion, "", args_.Next<int>());
                }
                return true;
            case 's':
                if (wide) {
                    const auto *text = args_.Next<const wchar_t *>();
                    Emit(conversion, "l", text == nullptr ? L"(null)" : text);
                } else {
                    const auto *text = args_.Next<const char *>();
                    Emit(conversion, "", text == nullptr ? "(null)" : text);
                }
                return true;
            default:
                return false;
        }
    }

    intmax_t NextSigned(Length length)
    {
        switch (length) {
            case Length::CHAR:
                return static_cast<signed char>(args_.Next<int>());
            case Length::SHORT:
                return static_cast<short>(args_.Next<int>());
            case Length::LONG:
                return args_.Next<long>();
            case Length::LONG_LONG:
                return args_.Next<long long>();
            case Length::INTMAX:
                return args_.Next<intmax_t>();
            case Length::SIZE:
                return args_.Next<ssize_t>();
            case Length::PTRDIFF:
                return args_.Next<ptrdiff_t>();
            default:
                return args_.Next<int>();
        }
    }

    uintmax_t NextUnsigned(Length length)
    {
        switch (length) {
            case Length::CHAR:
                return static_cast<unsigned char>(args_.Next<unsigned int>());
            case Length::SHORT:
                return static_cast<unsigned short>(args_.Next<unsigned int>());
            case Length::LONG:
                return args_.Next<unsigned long>();
            case Length::LONG_LONG:
                return args_.Next<unsigned long long>();
            case Length::INTMAX:
                return args_.Next<uintmax_t>();
            case Length::SIZE:
                return args_.Next<size_t>();
            case Length::PTRDIFF:
                return static_cast<uintmax_t>(args_.Next<ptrdiff_t>());
            default:
                return args_.Next<unsigned int>();
        }
    }

    template <typename T>
    void Emit(const Conversion &conversion, const char *modifier, T value)
    {
        if (!conversion.isPublic) {
            Append(PRIVATE_TEXT);
            return;
        }
        char width[16] = "";
        char precision[16] = "";
        if (conversion.width != UNSET) {
            std::snprintf(width, sizeof(width), "%d", conversion.width);
        }
        if (conversion.precision != UNSET) {
            std::snprintf(precision, sizeof(precision), ".%d", conversion.precision);
        }
        char format[64];
        std::snprintf(
            format, sizeof(format), "%%%s%s%s%s%c", conversion.flags, width, precision, modifier, conversion.letter);
        errno = savedErrno_;
        int size = std::snprintf(out_ + used_, capacity_ - used_, format, value);
        if (size > 0) {
            used_ += std::min(static_cast<size_t>(size), capacity_ - 1 - used_);
        }
    }

    char *out_;
    size_t capacity_;
    size_t used_ = 0;
    Arguments args_;
    // For %m: formatting what stands before it may change errno.
    int savedErrno_ = errno;
};

} // namespace

size_t FormatLogText(char *out, size_t capacity, const char *format, va_list args)
{
    return Formatter(out, capacity, args).Run(format);
}

} // namespace Host
