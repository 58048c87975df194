#include "host/attributebatch.h"
#include "host/sitestore.h"

#include <algorithm>

namespace olvex {

const Value *ParameterRecord::attribute(int number) const
{
    auto it = std::lower_bound(attributes.cbegin(), attributes.cend(), number,
                               [](const auto &entry, int n) { return entry.first < n; });
    if (it != attributes.cend() && it->first == number) {
        return &it->second;
    }
    return batch ? batch->attribute(batchIndex, number) : nullptr;
}

void ParameterRecord::setAttribute(int number, const Value &value)
{
    auto it = std::lower_bound(attributes.begin(), attributes.end(), number,
                               [](const auto &entry, int n) { return entry.first < n; });
    if (it != attributes.end() && it->first == number) {
        it->second = value;
    } else {
        attributes.insert(it, {number, value});
    }
}

} // namespace olvex
