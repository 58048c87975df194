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
    m_hintList = nullptr;
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
    m_hintList = nullptr; // new lists may move the others
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
        batch = std::make_shared<AttributeBatch>(m_store, std::move(pids));
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
    // The lists are found by PID through their order (cached()): no index entry per record.
    const auto block = std::make_shared<const QList<ParameterRecord>>(std::move(loaded));
    for (const int type : types) {
        m_recordsByType[type].reserve(block->size());
    }
    QList<Record> *list = nullptr; // the type of the record before, mostly the same
    for (const ParameterRecord &record : *block) {
        if (!list || list->constFirst()->type != record.type) {
            list = &m_recordsByType[record.type];
        }
        list->append(Record(block, &record));
    }
    for (const int type : types) {
        m_recordsByType[type].squeeze();
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

std::optional<std::pair<int, qsizetype>> DefinitionCache::listed(qint32 pid) const
{
    for (auto list = m_recordsByType.cbegin(); list != m_recordsByType.cend(); ++list) {
        const auto at = std::lower_bound(list->cbegin(), list->cend(), pid,
                                         [](const Record &r, qint32 p) { return r->pid < p; });
        if (at != list->cend() && (*at)->pid == pid) {
            return std::pair{list.key(), qsizetype(at - list->cbegin())};
        }
    }
    return std::nullopt;
}

std::optional<DefinitionCache::Record> DefinitionCache::cached(qint32 pid)
{
    // Lists are mostly walked in order (an export asks for each setting's units in turn): the
    // record after the one found last comes first.
    if (m_hintList && m_hintIndex + 1 < m_hintList->size()
        && m_hintList->at(m_hintIndex + 1)->pid == pid) {
        ++m_hintIndex;
        return m_hintList->at(m_hintIndex);
    }
    // Records read one by one first: a hash lookup, where the lists need a search each.
    const auto it = m_records.constFind(pid);
    if (it != m_records.constEnd()) {
        return *it;
    }
    if (const auto at = listed(pid)) {
        m_hintList = &*m_recordsByType.constFind(at->first);
        m_hintIndex = at->second;
        return m_hintList->at(m_hintIndex);
    }
    return std::nullopt;
}

DefinitionCache::Record DefinitionCache::find(qint32 pid)
{
    if (m_revision < 0) {
        revalidate();
    }
    if (std::optional<Record> record = cached(pid)) {
        return *record;
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
    QList<Record> records;
    records.reserve(pids.size());
    QList<qint32> missing;
    for (const qint32 pid : pids) {
        std::optional<Record> record = cached(pid);
        if (!record) {
            missing.append(pid);
        }
        records.append(record.value_or(nullptr));
    }
    if (missing.isEmpty()) {
        return records;
    }
    for (ParameterRecord &record : m_store->parameters(missing)) {
        const qint32 pid = record.pid;
        m_records.insert(pid, std::make_shared<const ParameterRecord>(std::move(record)));
    }
    for (qsizetype i = 0; i < pids.size(); ++i) {
        if (!records[i]) {
            // Left null (known to have no definition) when the batch did not find it.
            records[i] = m_records[pids[i]];
        }
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
    const auto single = m_records.find(pid);
    const auto at = listed(pid);
    Record current = at ? m_recordsByType.value(at->first).at(at->second)
                        : (single != m_records.end() ? *single : nullptr);
    if (!current) {
        return;
    }
    auto updated = std::make_shared<ParameterRecord>(*current);
    updated->setAttribute(number, value);
    if (at) {
        m_recordsByType[at->first][at->second] = updated;
    }
    if (single != m_records.end()) {
        *single = updated;
    }
    ++m_generation;
}

} // namespace olvex
