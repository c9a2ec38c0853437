#pragma once

#include <cstddef>
#include <functional>
#include <vector>

/// As few of `items` as still fail, in their order: without any one of them `fails` is false.
template<typename Item>
std::vector<Item> shrunk(std::vector<Item> items,
                         const std::function<bool(const std::vector<Item>&)>& fails)
{
    std::size_t size = items.size();
    while (size > 0) {
        bool isSmaller = false;
        for (std::size_t from = 0; from < items.size();) {
            std::vector<Item> rest(items.begin(),
                                   items.begin() + static_cast<std::ptrdiff_t>(from));
            if (from + size < items.size())
                rest.insert(rest.end(), items.begin() + static_cast<std::ptrdiff_t>(from + size),
                            items.end());
            if (fails(rest)) {
                items = std::move(rest);
                isSmaller = true;
            } else {
                from += size;
            }
        }
        // What was needed may no longer be, now that others are gone.
        if (size > 1 || !isSmaller)
            size /= 2;
    }
    return items;
}
