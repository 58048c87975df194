#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>

namespace olvex {

// A cheap hash for the short row and node keys of the list helpers ("K1234567"). Qt's string
// hash is built to resist flooding by outside input; these keys come from the data interface,
// and a list of thousands of rows hashes each key several times while it fills.
struct ShortKeyHash
{
    size_t operator()(const QString &key) const noexcept
    {
        std::uint64_t h = 1469598103934665603ULL; // FNV-1a
        for (const QChar c : key) {
            h ^= c.unicode();
            h *= 1099511628211ULL;
        }
        return size_t(h);
    }
};

} // namespace olvex
