#pragma once

#include <functional>
#include <utility>

/// Calls a copy of the callback. What is called may do anything, and so may destroy or replace the
/// record that holds the callback.
template<typename... Parameters, typename... Arguments>
void callCopy(std::function<void(Parameters...)> callback, Arguments&&... arguments)
{
    callback(std::forward<Arguments>(arguments)...);
}
