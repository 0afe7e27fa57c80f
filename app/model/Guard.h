// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

namespace vantiro {

/// Wraps functions that call back into an object, so that they do nothing once the object is gone. A member of that
/// object; wrapped functions are made and called on its thread, and may be copied and dropped on any.
class Guard {
public:
    template <class Function>
    [[nodiscard]] auto operator()(Function function) const
    {
        return [token = std::weak_ptr(m_token), function = std::move(function)](auto&&... arguments) mutable {
            if (!token.expired()) {
                function(std::forward<decltype(arguments)>(arguments)...);
            }
        };
    }

private:
    std::shared_ptr<char> m_token = std::make_shared<char>();
};

}  // namespace vantiro
