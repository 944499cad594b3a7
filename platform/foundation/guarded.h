// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <exception>
#include <type_traits>

namespace clipheave::platform {

/// Returns what an exception says as an error: its own text, or that there is not enough memory.
[[nodiscard]] Error errorOf(const std::exception& thrown);

namespace detail {
template <class T> struct AsResult { using type = Result<T>; };
template <class T> struct AsResult<Result<T>> { using type = Result<T>; };
} // namespace detail

/// Runs the operation and returns its result; an exception becomes a failure. For the places where
/// a thread, a run or a queue calls what others gave it: nothing of ours throws, but memory and
/// threads can run out anywhere, and one item's misfortune must not end the others' work.
template <class Operation>
[[nodiscard]] auto guarded(const Operation& operation) ->
    typename detail::AsResult<std::invoke_result_t<Operation>>::type {
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Operation>>) {
            operation();
            return {};
        } else {
            return operation();
        }
    } catch (const std::exception& thrown) {
        return tl::unexpected(errorOf(thrown));
    }
}

} // namespace clipheave::platform
