// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_ERROR_CODE_H
#define NUBIS_ERROR_CODE_H

#include <string>
#include <system_error>
#include <type_traits>

#include "nb_error.h"

namespace std {
template <>
struct is_error_code_enum<Nubis::NBLocalErrorCode> : true_type {};
} // namespace std

namespace Nubis {
/// The category "nubis.local": failures that the library found; values are those of NBLocalErrorCode. Lives for ever.
/// Any thread may call. As with every category that a header defines, compare codes within one program or library.
inline const std::error_category &LocalErrorCategory()
{
    class Category final : public std::error_category {
    public:
        const char *name() const noexcept override
        {
            return "nubis.local";
        }

        std::string message(int value) const override
        {
            switch (value) {
                case NB_LOCAL_SUCCESS:
                    return "no error";
                case NB_LOCAL_NOT_CONNECTED:
                    return "there is no connection to the cloud-drive service";
                case NB_LOCAL_IPC_FAILED:
                    return "the request could not be sent or was lost on its way";
                case NB_LOCAL_BAD_DATA:
                    return "a reply, or a part of it, is not what was expected";
                case NB_LOCAL_EMPTY_REPLY:
                    return "the reply is empty, the kit or container is gone, or no record id could be made";
                case NB_LOCAL_KIT_GONE:
                    return "the kit of the container is gone";
                case NB_LOCAL_BAD_NOTIFICATION:
                    return "the notification is no object, or its key or signature is missing";
                case NB_LOCAL_UNEXPECTED_REPLY:
                    return "the service gave no result, or a failure without a description";
                default:
                    return "unknown local error " + std::to_string(value);
            }
        }

        std::error_condition default_error_condition(int value) const noexcept override
        {
            switch (value) {
                case NB_LOCAL_NOT_CONNECTED:
                    return std::errc::not_connected;
                case NB_LOCAL_IPC_FAILED:
                    return std::errc::io_error;
                case NB_LOCAL_BAD_DATA:
                case NB_LOCAL_BAD_NOTIFICATION:
                    return std::errc::bad_message;
                default:
                    return {value, *this};
            }
        }
    };
    static const auto *category = new Category;
    return *category;
}

/// The category "nubis.service": failures that the service answered with; values are its codes. What they mean, and the
/// text and the details of one failure, are in the NBError.
inline const std::error_category &ServiceErrorCategory()
{
    class Category final : public std::error_category {
    public:
        const char *name() const noexcept override
        {
            return "nubis.service";
        }

        std::string message(int value) const override
        {
            return "the service answered with error " + std::to_string(value);
        }
    };
    static const auto *category = new Category;
    return *category;
}

/// Lets `std::error_code code = NB_LOCAL_NOT_CONNECTED` and `code == NB_LOCAL_NOT_CONNECTED` work.
inline std::error_code make_error_code(NBLocalErrorCode code)
{
    return {static_cast<int>(code), LocalErrorCategory()};
}

/// The local error, else the service's; without an error a code that is false. An error that names no code is
/// NB_LOCAL_UNEXPECTED_REPLY.
inline std::error_code ToErrorCode(const NBError &error)
{
    if (!error.HasError()) {
        return {};
    }
    if (error.IsLocalError()) {
        return error.GetLocalErrorCode();
    }
    const int code = error.GetServerErrorCode();
    return code == 0 ? make_error_code(NB_LOCAL_UNEXPECTED_REPLY) : std::error_code(code, ServiceErrorCategory());
}
} // namespace Nubis

#endif // NUBIS_ERROR_CODE_H
