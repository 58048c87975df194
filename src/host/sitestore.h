#pragma once

#include "common/host.h"
#include "common/value.h"
#include "host/sqlconnection.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace olvex {

class AttributeBatch;

// The site as a whole.
struct SiteInfo
{
    QString siteId;
    QString name;
    QString exportFolder;
    bool alternativeState = false;
};

// Who makes a change, and from where: carried into queue rows, logs and the audit trail.
struct Actor
{
    QString userName;
    QString clientName;
    QString clientAddress;
};

// One parameter's definition as the store holds it.
struct ParameterRecord
{
    qint32 pid = 0;
    QString name;
    int type = 0;
    int plantUnit = 0; // 0: none
    QString unitName;  // the plant unit's name
    QString unitsText; // engineering units ("ppm")
    bool inError = false;
    // Ascending by attribute number. A record read with a whole list (batch set) holds here
    // only the attributes written since; the others come from the batch, which reads each
    // attribute number for all its records the first time any of them is asked for it.
    QList<std::pair<int, Value>> attributes;
    std::shared_ptr<AttributeBatch> batch;
    qsizetype batchIndex = -1; // this record's place in the batch

    // Null when the attribute is unset. May read the batch's attribute (and throw olvex::Error
    // when that read fails).
    const Value *attribute(int number) const;
    void setAttribute(int number, const Value &value);
};

// What changes while a parameter is on screen: its current value and whether a value write
// waits for the service.
struct LiveState
{
    CurrentValue current;
    bool changePending = false;
};

struct UserRecord
{
    QString name;
    QString fullName;
    bool allPrivileges = false;
    QSet<int> privileges;

    bool has(int privilege) const { return allPrivileges || privileges.contains(privilege); }
};

// Counts of a site, for `olvex-settings info` and the tests.
struct SiteCounts
{
    QMap<int, int> parametersByType;
    int users = 0;
    int channels = 0;
    int queuedCommands = 0;
    int queuedWrites = 0;
};

// The site store: one site in an SQLite file or a PostgreSQL database (see schema.h for the
// tables and connectiontext.h for the connection texts).
//
// Opening a site in code:
//     auto store = olvex::SiteStore::open(QStringLiteral("/var/lib/olvex/plant.db"));
//     auto di = std::make_shared<olvex::SiteDataInterface>(store, olvex::HostSession{...});
// Every failure throws olvex::Error with one line for the operator: a bad connection text, a
// file or database that holds no site, an unreachable server, a site of a newer schema. Opening
// never creates or changes anything except bringing an older site's schema up to date.
//
// A store is one connection, used from the thread that opened it. Reads come in batches (all
// definitions of some parameter types in two queries, their live states in one); writes of more
// than one row run in one transaction (SqlConnection::begin nests, so a caller may wrap several
// store calls in its own Transaction).
class SiteStore
{
public:
    static std::shared_ptr<SiteStore> open(const QString &connectionText);

    // Creates a new site and lets fill add its content, all before anyone can see it: SQLite
    // builds a file next to the target and renames it into place; PostgreSQL does it all in one
    // transaction. An existing site is replaced only with replace set; something that exists and
    // is not a site (a file, a database with other tables of these names) is never touched.
    static std::shared_ptr<SiteStore> create(const QString &connectionText, const SiteInfo &info,
                                             bool replace,
                                             const std::function<void(SiteStore &)> &fill = {});

    ~SiteStore();
    SiteStore(const SiteStore &) = delete;
    SiteStore &operator=(const SiteStore &) = delete;

    SqlConnection &sql() { return *m_sql; }
    const ConnectionTarget &target() const { return m_sql->target(); }
    QString connectionText() const { return m_sql->target().text; }
    bool isSqlite() const { return m_sql->isSqlite(); }
    int schemaVersion() const { return m_schemaVersion; }
    // The site id as read when the store was opened.
    QString siteId() const { return m_siteId; }

    SiteInfo site();
    void setAlternativeState(bool on);
    // The definition revision (counted up by every definition change, by any program) and the
    // alternative state, in one query: what a cache checks before it trusts itself.
    std::pair<qint64, bool> revisionAndState();
    SiteCounts counts();

    // Definitions, batched: all parameters of the types, ascending by PID, with every attribute.
    QList<ParameterRecord> parametersOfTypes(const QList<int> &types);
    // The attributes of the numbers of the parameters pids (ascending), in one read transaction:
    // by number, each column parallel to pids, an unset attribute nullopt. One walk through each
    // number's index entries in PID order, whatever the share of the site pids are: for lists
    // that are much of it.
    using AttributeColumn = std::vector<std::optional<Value>>;
    std::map<int, AttributeColumn> attributeColumns(const std::vector<qint32> &pids,
                                                    const QList<int> &numbers);
    // The first read of a list, in one read transaction: the definitions of all parameters of
    // the types (attributes apart) ascending by PID, the attributes of the numbers, and the live
    // states. Made for lists that are much of the site: one pass over all parameters, and one
    // walk through each attribute number's index entries, whatever the list's share.
    struct ListRead
    {
        QList<ParameterRecord> records;
        // By attribute number, each parallel to records; an unset attribute is nullopt.
        std::map<int, AttributeColumn> columns;
        QList<std::pair<qint32, LiveState>> live; // ascending by PID, as liveStatesOfTypes()
    };
    ListRead readList(const QList<int> &types, const QList<int> &numbers);
    std::optional<ParameterRecord> parameter(qint32 pid);
    // The definitions of the PIDs that have one, ascending by PID, each once; one query
    // whatever the list's length.
    QList<ParameterRecord> parameters(const QList<qint32> &pids);
    bool parameterExists(qint32 pid);
    // Live states of all parameters of the types (one query, plus one for pending writes),
    // ascending by PID; a PID with neither a current value nor a pending write is left out.
    QList<std::pair<qint32, LiveState>> liveStatesOfTypes(const QList<int> &types);
    LiveState liveState(qint32 pid);
    // Live states of the PIDs (one query, plus one for pending writes); a PID with neither a
    // current value nor a pending write is left out.
    QHash<qint32, LiveState> liveStates(const QList<qint32> &pids);

    // Writes one attribute at once, with its audit row; counts the revision up and returns the
    // new revision.
    qint64 setAttribute(qint32 pid, int number, const Value &value, const Actor &who,
                        const QString &source = QString());
    // Queues a value write for the service (the setting reads change-pending until it is
    // applied). The value is first brought to the setting's data type (attribute -14): text to
    // a number, a date or a Boolean; a one-element array stands for its element. Throws
    // olvex::Error 13 "Type mismatch" when it does not fit. Returns the write's id.
    qint64 queueValueWrite(qint32 pid, const Value &value, const Actor &who);
    // Stores a current value at once (the service's side), with its audit row.
    void setCurrentValue(qint32 pid, const Value &value, int status, const Actor &who,
                         const QString &source);

    std::optional<UserRecord> user(const QString &name);
    // 0 when the channel does not exist.
    int channelKind(int channel);

    // The current-data reader's item; nullopt when there is none.
    struct DataItem
    {
        QString text;
        int status = 0;
        QDateTime time;
    };
    std::optional<DataItem> currentData(qint32 pid, const QString &key);
    void setCurrentData(qint32 pid, const QString &key, const QString &text, int status);

    void logMessage(int severity, const QString &text, const Actor &who);
    // Several lines (severity, text) at once, in order, with a few multi-row statements.
    void logMessages(const QList<std::pair<int, QString>> &lines, const Actor &who);

private:
    explicit SiteStore(std::unique_ptr<SqlConnection> connection);
    static std::shared_ptr<SiteStore> openConnection(const ConnectionTarget &target);
    void readSite();
    qint64 bumpRevision();

    std::unique_ptr<SqlConnection> m_sql;
    int m_schemaVersion = 0;
    QString m_siteId;
};

} // namespace olvex
