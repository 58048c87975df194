#pragma once

#include "host/sitestore.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace olvex {

class AttributeBatch;

// The definitions a data interface has read, shared by all the parameter objects it hands out.
// All parameters of a type come in one batch the first time that type is asked for: with all
// their attributes (ofTypes), or with those a caller named, the others then one number at a
// time for the whole batch as they are first asked for (adoptTypes, see AttributeBatch); a single
// PID missing from the cache costs one query for its whole definition, and so does a list. The
// cache trusts itself until the site's definition revision moves (another program changed a
// definition); the data interface checks that at the start of each list fill (GetPidsOfTypes,
// GetPidDirectory).
class DefinitionCache
{
public:
    using Record = std::shared_ptr<const ParameterRecord>;

    explicit DefinitionCache(std::shared_ptr<SiteStore> store);

    SiteStore &store() { return *m_store; }
    const std::shared_ptr<SiteStore> &storePtr() const { return m_store; }

    // One query: drops everything cached when the revision moved; refreshes the alternative
    // state.
    void revalidate();
    bool alternativeState() const { return m_alternativeState; }

    // Definitions of every parameter of the types, ascending by PID.
    QList<Record> ofTypes(const QList<int> &types);
    using AttributeColumns = std::map<int, std::vector<std::optional<Value>>>;
    // The types of the list not cached yet.
    QList<int> missingTypes(const QList<int> &types) const;
    // ofTypes() over definitions the caller read itself (SiteStore::readList) for all the
    // missing types, with the attributes read along.
    QList<Record> adoptTypes(const QList<int> &types, QList<ParameterRecord> loaded,
                             AttributeColumns columns);
    // Reads the attributes of the numbers for every cached list of the types not holding them.
    void loadAttributes(const QList<int> &types, const QList<int> &numbers);
    // The definition of pid; null when the PID has none.
    Record find(qint32 pid);
    // find() of each PID, in order; the ones not cached yet come in one batch.
    QList<Record> findAll(const QList<qint32> &pids);

    // Counted up whenever any cached definition is replaced or dropped: a parameter object
    // holding a definition of an older generation looks it up again.
    quint64 generation() const { return m_generation; }

    // After this program wrote an attribute: keeps the cache in step, and keeps trusting it if
    // nobody else changed a definition in between (the revision moved by exactly one).
    void attributeWritten(qint32 pid, int number, const Value &value, qint64 newRevision);

private:
    void clear();
    // With columns, the records' other attributes are read on first use (AttributeBatch);
    // without, the records hold all of them.
    void insertTypes(const QList<int> &types, QList<ParameterRecord> loaded,
                     std::optional<AttributeColumns> columns);
    // pid's place in the loaded lists (type, index).
    std::optional<std::pair<int, qsizetype>> listed(qint32 pid) const;
    // pid's record if the cache knows it (null: known to have no definition); nullopt when not.
    std::optional<Record> cached(qint32 pid);

    std::shared_ptr<SiteStore> m_store;
    QHash<qint32, Record> m_records;           // read one by one; null: known to have no definition
    QHash<int, QList<Record>> m_recordsByType; // of the loaded types, ascending by PID
    QSet<int> m_loadedTypes;
    QHash<int, std::shared_ptr<AttributeBatch>> m_batchByType; // of the loaded types
    qint64 m_revision = -1;
    bool m_alternativeState = false;
    quint64 m_generation = 0;
    // Where find() found a record last, in its type's list.
    const QList<Record> *m_hintList = nullptr; // in m_recordsByType
    qsizetype m_hintIndex = -1;
};

} // namespace olvex
