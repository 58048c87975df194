#include "host/attributebatch.h"

#include "host/sitestore.h"

#include <algorithm>

namespace olvex {

AttributeBatch::AttributeBatch(std::shared_ptr<SiteStore> store, QList<int> types,
                               std::vector<qint32> pids)
    : m_store(std::move(store))
    , m_types(std::move(types))
    , m_pids(std::move(pids))
{}

const Value *AttributeBatch::attribute(qsizetype index, int number)
{
    auto it = m_columns.find(number);
    if (it == m_columns.end()) {
        load({number});
        it = m_columns.find(number);
    }
    if (index < 0 || size_t(index) >= it->second.size()) {
        return nullptr;
    }
    const std::optional<Value> &value = it->second[size_t(index)];
    return value ? &*value : nullptr;
}

void AttributeBatch::load(const QList<int> &numbers)
{
    QList<int> missing;
    for (const int number : numbers) {
        if (!m_columns.contains(number) && !missing.contains(number)) {
            missing.append(number);
        }
    }
    if (missing.isEmpty()) {
        return;
    }
    QList<SiteStore::AttributeRow> rows = m_store->attributesOfTypes(m_types, missing);
    std::map<int, Column> loaded;
    for (const int number : std::as_const(missing)) {
        loaded[number].resize(m_pids.size());
    }
    for (SiteStore::AttributeRow &row : rows) {
        const auto at = std::lower_bound(m_pids.cbegin(), m_pids.cend(), row.pid);
        const auto column = loaded.find(row.number);
        if (at == m_pids.cend() || *at != row.pid || column == loaded.end()) {
            continue; // a parameter added since the list was read
        }
        column->second[size_t(at - m_pids.cbegin())] = std::move(row.value);
    }
    // Only once everything was read: a failed read leaves the numbers to be read again.
    m_columns.merge(loaded);
}

void AttributeBatch::adopt(int number, std::vector<std::optional<Value>> values)
{
    values.resize(m_pids.size());
    m_columns.insert_or_assign(number, std::move(values));
}

} // namespace olvex
