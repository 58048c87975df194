#pragma once

#include "common/value.h"

#include <QList>

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace olvex {

class SiteStore;

// The attributes of a list of definitions read together (all parameters of some types): a
// list rarely needs more than a few of a parameter's many attributes, so none is read with the
// list; the first time any record of the list asks for an attribute number, that number is
// read for the whole list at once (SiteStore::attributeColumns), and kept. A record's own written
// attributes override the batch's (see ParameterRecord).
class AttributeBatch
{
public:
    // pids ascending: the records' PIDs, a record's index being its place here.
    AttributeBatch(std::shared_ptr<SiteStore> store, std::vector<qint32> pids);

    // Null when the attribute is unset. Throws olvex::Error when reading fails.
    const Value *attribute(qsizetype index, int number);
    // Reads the numbers not read yet together (a caller that knows what it will ask for).
    void load(const QList<int> &numbers);
    // Takes a number read with the list (parallel to pids).
    void adopt(int number, std::vector<std::optional<Value>> values);

private:
    using Column = std::vector<std::optional<Value>>;

    std::shared_ptr<SiteStore> m_store;
    std::vector<qint32> m_pids;
    std::map<int, Column> m_columns; // by number; nodes stay put, so pointers into them do too
};

} // namespace olvex
