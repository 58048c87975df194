#include "host/sitebuilder.h"

#include "host/storedvalue.h"

#include <QSqlQuery>

namespace olvex {

namespace {

enum TableIndex {
    TPlantUnits,
    TParameters,
    TAttributes,
    TCurrentValues,
    TCurrentData,
    TUsers,
    TPrivileges,
    TChannels,
    TCalChecks,
    TTableCount
};

// Both backends take thousands of bound values in one statement; 4000 keeps well inside
// SQLite's and PostgreSQL's limits.
constexpr int kValuesPerStatement = 4000;

} // namespace

class SiteBuilder::Table
{
public:
    Table(QString name, QStringList columns)
        : m_name(std::move(name))
        , m_columns(std::move(columns))
        , m_rowsPerStatement(std::max<int>(1, kValuesPerStatement / int(m_columns.size())))
    {}

    void add(std::initializer_list<QVariant> row)
    {
        Q_ASSERT(int(row.size()) == m_columns.size());
        m_values.insert(m_values.end(), row.begin(), row.end());
    }
    bool full() const { return rows() >= m_rowsPerStatement; }
    int rows() const { return int(m_values.size() / size_t(m_columns.size())); }

    void flush(SqlConnection &sql)
    {
        int done = 0;
        const int total = rows();
        while (done < total) {
            const int count = std::min(m_rowsPerStatement, total - done);
            QSqlQuery &query = sql.prepared(statement(count));
            const size_t first = size_t(done) * size_t(m_columns.size());
            const size_t n = size_t(count) * size_t(m_columns.size());
            for (size_t i = 0; i < n; ++i) {
                query.bindValue(int(i), m_values[first + i]);
            }
            sql.exec(query);
            done += count;
        }
        m_values.clear();
    }

private:
    QString statement(int rows) const
    {
        const QString one
            = u'(' + QStringLiteral("?, ").repeated(m_columns.size()).chopped(2) + u')';
        QStringList all;
        all.reserve(rows);
        for (int i = 0; i < rows; ++i) {
            all.append(one);
        }
        return u"INSERT INTO " + m_name + u" (" + m_columns.join(u", ") + u") VALUES "
               + all.join(u", ");
    }

    QString m_name;
    QStringList m_columns;
    int m_rowsPerStatement;
    std::vector<QVariant> m_values;
};

SiteBuilder::SiteBuilder(SiteStore &store)
    : m_store(store)
{
    auto add = [this](const char *name, std::initializer_list<const char *> columns) {
        QStringList list;
        for (const char *c : columns) {
            list.append(QString::fromLatin1(c));
        }
        m_tables.push_back(std::make_unique<Table>(QString::fromLatin1(name), list));
    };
    add("plant_units", {"unit_number", "name"});
    add("parameters", {"pid", "name", "ptype", "plant_unit", "units_text", "in_error"});
    add("attributes", {"pid", "number", "vkind", "val"});
    add("current_values", {"pid", "vkind", "val", "status", "time"});
    add("current_data", {"pid", "item_key", "text", "status", "time"});
    add("users", {"name", "full_name", "all_privileges"});
    add("user_privileges", {"user_name", "privilege"});
    add("channels", {"channel", "kind", "name"});
    add("cal_checks", {"cal_pid", "cylinder_pid", "started", "ended", "result", "cylinder_id",
                       "expiration_date", "vendor_id", "gas_codes"});
    Q_ASSERT(m_tables.size() == TTableCount);
}

SiteBuilder::~SiteBuilder() = default;

SiteBuilder::Table &SiteBuilder::table(int index)
{
    return *m_tables[size_t(index)];
}

void SiteBuilder::added(Table &table)
{
    // Children refer to parents: a full buffer flushes every table, parents first.
    if (table.full()) {
        flush();
    }
}

void SiteBuilder::flush()
{
    for (auto &table : m_tables) {
        table->flush(m_store.sql());
    }
}

void SiteBuilder::addPlantUnit(int number, const QString &name)
{
    table(TPlantUnits).add({number, name});
    added(table(TPlantUnits));
}

void SiteBuilder::addParameter(qint32 pid, const QString &name, int type, int plantUnit,
                               const QString &unitsText, bool inError)
{
    table(TParameters)
        .add({pid, name, type,
              plantUnit > 0 ? QVariant(plantUnit) : QVariant(QMetaType(QMetaType::Int)),
              unitsText.isNull() ? QStringLiteral("") : unitsText, inError ? 1 : 0});
    added(table(TParameters));
}

void SiteBuilder::setAttribute(qint32 pid, int number, const Value &value)
{
    const StoredValue stored = encodeValue(value);
    table(TAttributes).add({pid, number, stored.kind, stored.text});
    added(table(TAttributes));
}

void SiteBuilder::setCurrentValue(qint32 pid, const Value &value, int status, const QDateTime &time)
{
    const StoredValue stored = encodeValue(value);
    table(TCurrentValues)
        .add({pid, stored.kind, stored.text, status,
              dateTimeText(time.isValid() ? time : QDateTime::currentDateTime())});
    added(table(TCurrentValues));
}

void SiteBuilder::setCurrentData(qint32 pid, const QString &key, const QString &text, int status)
{
    table(TCurrentData)
        .add({pid, key, text.isNull() ? QStringLiteral("") : text, status,
              dateTimeText(QDateTime::currentDateTime())});
    added(table(TCurrentData));
}

void SiteBuilder::addUser(const QString &name, const QString &fullName, bool allPrivileges,
                          const QList<int> &privileges)
{
    table(TUsers).add({name, fullName, allPrivileges ? 1 : 0});
    added(table(TUsers));
    for (const int privilege : privileges) {
        table(TPrivileges).add({name, privilege});
        added(table(TPrivileges));
    }
}

void SiteBuilder::addChannel(int channel, int kind, const QString &name)
{
    table(TChannels).add({channel, kind, name});
    added(table(TChannels));
}

void SiteBuilder::addCalCheck(qint32 calPid, qint32 cylinderPid, const QDateTime &started,
                              const QDateTime &ended, const QString &result,
                              const QString &cylinderId, const QDateTime &expiration,
                              const QString &vendorId, const QString &gasCodes)
{
    table(TCalChecks)
        .add({calPid, cylinderPid, dateTimeText(started), dateTimeText(ended), result, cylinderId,
              dateTimeText(expiration), vendorId, gasCodes});
    added(table(TCalChecks));
}

} // namespace olvex
