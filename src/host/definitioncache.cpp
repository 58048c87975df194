#include "host/definitioncache.h"

#include <algorithm>

namespace olvex {

DefinitionCache::DefinitionCache(std::shared_ptr<SiteStore> store)
    : m_store(std::move(store))
{}

void DefinitionCache::revalidate()
{
    const auto [revision, alternative] = m_store->revisionAndState();
    m_alternativeState = alternative;
    if (revision != m_revision) {
        clear();
        m_revision = revision;
    }
}

void DefinitionCache::clear()
{
    if (!m_records.isEmpty() || !m_loadedTypes.isEmpty()) {
        ++m_generation;
    }
    m_records.clear();
    m_recordsByType.clear();
    m_loadedTypes.clear();
}

QList<DefinitionCache::Record> DefinitionCache::ofTypes(const QList<int> &types)
{
    if (m_revision < 0) {
        revalidate();
    }
    QList<int> missing;
    for (const int type : types) {
        if (!m_loadedTypes.contains(type) && !missing.contains(type)) {
            missing.append(type);
        }
    }
    if (!missing.isEmpty()) {
        QList<ParameterRecord> loaded = m_store->parametersOfTypes(missing);
        for (const int type : missing) {
            m_recordsByType[type]; // an empty list for a type without parameters
        }
        for (ParameterRecord &record : loaded) {
            const qint32 pid = record.pid;
            const int type = record.type;
            auto shared = std::make_shared<const ParameterRecord>(std::move(record));
            m_recordsByType[type].append(shared);
            m_records.insert(pid, std::move(shared));
        }
        for (const int type : missing) {
            m_loadedTypes.insert(type);
        }
    }
    if (types.size() == 1) {
        return m_recordsByType.value(types.first()); // shared, not copied
    }
    QList<Record> records;
    QSet<int> seen;
    for (const int type : types) {
        if (!seen.contains(type)) {
            seen.insert(type);
            records.append(m_recordsByType.value(type));
        }
    }
    if (seen.size() > 1) {
        std::sort(records.begin(), records.end(),
                  [](const Record &a, const Record &b) { return a->pid < b->pid; });
    }
    return records;
}

DefinitionCache::Record DefinitionCache::find(qint32 pid)
{
    if (m_revision < 0) {
        revalidate();
    }
    auto it = m_records.constFind(pid);
    if (it != m_records.constEnd()) {
        return *it;
    }
    std::optional<ParameterRecord> loaded = m_store->parameter(pid);
    Record record = loaded ? std::make_shared<const ParameterRecord>(std::move(*loaded)) : nullptr;
    m_records.insert(pid, record);
    return record;
}

QList<DefinitionCache::Record> DefinitionCache::findAll(const QList<qint32> &pids)
{
    if (m_revision < 0) {
        revalidate();
    }
    QList<qint32> missing;
    for (const qint32 pid : pids) {
        if (!m_records.contains(pid)) {
            missing.append(pid);
        }
    }
    if (!missing.isEmpty()) {
        for (ParameterRecord &record : m_store->parameters(missing)) {
            const qint32 pid = record.pid;
            m_records.insert(pid, std::make_shared<const ParameterRecord>(std::move(record)));
        }
        for (const qint32 pid : std::as_const(missing)) {
            if (!m_records.contains(pid)) {
                m_records.insert(pid, nullptr); // known to have no definition
            }
        }
    }
    QList<Record> records;
    records.reserve(pids.size());
    for (const qint32 pid : pids) {
        records.append(m_records.value(pid));
    }
    return records;
}

void DefinitionCache::attributeWritten(qint32 pid, int number, const Value &value,
                                       qint64 newRevision)
{
    if (newRevision != m_revision + 1) {
        // Someone else changed definitions too: start afresh at the next fill.
        clear();
        m_revision = -1;
        return;
    }
    m_revision = newRevision;
    auto it = m_records.find(pid);
    if (it == m_records.end() || !*it) {
        return;
    }
    auto updated = std::make_shared<ParameterRecord>(**it);
    updated->setAttribute(number, value);
    const auto byType = m_recordsByType.find(updated->type);
    if (byType != m_recordsByType.end()) {
        QList<Record> &list = *byType;
        const auto at = std::lower_bound(list.begin(), list.end(), pid,
                                         [](const Record &r, qint32 p) { return r->pid < p; });
        if (at != list.end() && (*at)->pid == pid) {
            *at = updated;
        }
    }
    *it = std::move(updated);
    ++m_generation;
}

} // namespace olvex
