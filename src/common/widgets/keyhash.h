#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <unordered_map>

class QTreeWidgetItem;

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

// The key index of the list helpers. Its entries come from a pool of its own (give it one that
// outlives it): filling thousands of rows, and clearing them before the next fill, then costs no
// trip through the general heap per row.
using KeyIndex = std::pmr::unordered_map<QString, QTreeWidgetItem *, ShortKeyHash>;

} // namespace olvex
