#include "host/attributebatch.h"

#include "host/sitestore.h"

#include <algorithm>

namespace olvex {

AttributeBatch::AttributeBatch(std::shared_ptr<SiteStore> store, std::vector<qint32> pids)
    : m_store(std::move(store))
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
        if (!m_columns.contains(number)) {
            missing.append(number);
        }
    }
    if (missing.isEmpty()) {
        return;
    }
    std::map<int, Column> loaded = m_store->attributeColumns(m_pids, missing);
    // Only once everything was read: a failed read leaves the numbers to be read again.
    m_columns.merge(loaded);
}

void AttributeBatch::adopt(int number, std::vector<std::optional<Value>> values)
{
    values.resize(m_pids.size());
    m_columns.insert_or_assign(number, std::move(values));
}

} // namespace olvex
