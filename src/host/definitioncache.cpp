#include "host/definitioncache.h"

#include "host/attributebatch.h"

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
    m_batchByType.clear();
}

QList<int> DefinitionCache::missingTypes(const QList<int> &types) const
{
    QList<int> missing;
    for (const int type : types) {
        if (!m_loadedTypes.contains(type) && !missing.contains(type)) {
            missing.append(type);
        }
    }
    return missing;
}

void DefinitionCache::insertTypes(const QList<int> &types, QList<ParameterRecord> loaded,
                                  std::optional<AttributeColumns> columns)
{
    for (const int type : types) {
        m_recordsByType[type]; // an empty list for a type without parameters
    }
    std::shared_ptr<AttributeBatch> batch;
    if (columns) {
        std::vector<qint32> pids;
        pids.reserve(size_t(loaded.size()));
        for (const ParameterRecord &record : std::as_const(loaded)) {
            pids.push_back(record.pid); // ascending
        }
        batch = std::make_shared<AttributeBatch>(m_store, types, std::move(pids));
        for (auto &[number, values] : *columns) {
            batch->adopt(number, std::move(values));
        }
        for (qsizetype i = 0; i < loaded.size(); ++i) {
            loaded[i].batch = batch;
            loaded[i].batchIndex = i;
        }
    }
    // The records live in one block, which each of them keeps alive: one allocation for the
    // list rather than one per record.
    const auto block = std::make_shared<const QList<ParameterRecord>>(std::move(loaded));
    m_records.reserve(m_records.size() + block->size());
    for (const ParameterRecord &record : *block) {
        Record shared(block, &record);
        m_recordsByType[record.type].append(shared);
        m_records.insert(record.pid, std::move(shared));
    }
    for (const int type : types) {
        m_loadedTypes.insert(type);
        if (batch) {
            m_batchByType.insert(type, batch);
        }
    }
}

QList<DefinitionCache::Record> DefinitionCache::adoptTypes(const QList<int> &types,
                                                           QList<ParameterRecord> loaded,
                                                           AttributeColumns columns)
{
    insertTypes(missingTypes(types), std::move(loaded), std::move(columns));
    return ofTypes(types);
}

void DefinitionCache::loadAttributes(const QList<int> &types, const QList<int> &numbers)
{
    QSet<AttributeBatch *> done;
    for (const int type : types) {
        const auto batch = m_batchByType.constFind(type);
        if (batch != m_batchByType.constEnd() && !done.contains(batch->get())) {
            done.insert(batch->get());
            (*batch)->load(numbers);
        }
    }
}

QList<DefinitionCache::Record> DefinitionCache::ofTypes(const QList<int> &types)
{
    if (m_revision < 0) {
        revalidate();
    }
    const QList<int> missing = missingTypes(types);
    if (!missing.isEmpty()) {
        insertTypes(missing, m_store->parametersOfTypes(missing), std::nullopt);
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
    // Lists are mostly walked in order (an export asks for each setting's units in turn): the
    // record after the one found last comes first.
    const auto hinted = m_recordsByType.constFind(m_hintType);
    if (hinted != m_recordsByType.constEnd() && m_hintIndex + 1 < hinted->size()
        && hinted->at(m_hintIndex + 1)->pid == pid) {
        ++m_hintIndex;
        return hinted->at(m_hintIndex);
    }
    auto it = m_records.constFind(pid);
    if (it != m_records.constEnd()) {
        if (*it) {
            const auto list = m_recordsByType.constFind((*it)->type);
            if (list != m_recordsByType.constEnd()) {
                const auto at
                    = std::lower_bound(list->cbegin(), list->cend(), pid,
                                       [](const Record &r, qint32 p) { return r->pid < p; });
                if (at != list->cend() && (*at)->pid == pid) {
                    m_hintType = (*it)->type;
                    m_hintIndex = at - list->cbegin();
                }
            }
        }
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
