#include "dastestsite.h"

#include "common/pid.h"
#include "host/sitebuilder.h"

#include <QSqlQuery>

namespace olvex::test {

std::shared_ptr<SiteStore> createServiceSite(const QString &connectionText, int settings,
                                             QList<qint32> *pids)
{
    QList<qint32> made;
    for (int i = 0; i < settings; ++i) {
        made.append(BuildPid(1, 300 + i / 100, 0, 1, i % 100));
    }
    SiteInfo info;
    info.siteId = QStringLiteral("DASTEST");
    info.name = QStringLiteral("Service test site");
    auto store = SiteStore::create(connectionText, info, false, [&](SiteStore &site) {
        SiteBuilder builder(site);
        for (const qint32 pid : made) {
            builder.addParameter(pid, u"Setting " + QString::number(pid), 4);
            builder.setAttribute(pid, -14, Value(1));    // a number
            builder.setAttribute(pid, -9, Value(true));  // readable
            builder.setAttribute(pid, -10, Value(true)); // changeable
            builder.setCurrentValue(pid, Value(0));
        }
        builder.addUser(kOperator.userName, QStringLiteral("Plant operator"), true);
        builder.flush();
    });
    if (pids != nullptr) {
        *pids = made;
    }
    return store;
}

QList<qint64> queueWrites(SiteStore &store, const QList<std::pair<qint32, Value>> &writes)
{
    QList<qint64> ids;
    Transaction transaction(store.sql(), SqlConnection::TransactionKind::Write);
    for (const auto &[pid, value] : writes) {
        ids.append(store.queueValueWrite(pid, value, kOperator));
    }
    transaction.commit();
    return ids;
}

qint64 scalar(SiteStore &store, const QString &sql)
{
    return store.sql().scalar(sql).toLongLong();
}

QHash<QString, int> auditedValues(SiteStore &store)
{
    QSqlQuery query = store.sql().prepare(
        QStringLiteral("SELECT new_val FROM audit_trail WHERE attribute IS NULL"));
    store.sql().exec(query);
    QHash<QString, int> counts;
    while (query.next()) {
        ++counts[query.value(0).toString()];
    }
    return counts;
}

QStringList messageLog(SiteStore &store)
{
    QSqlQuery query
        = store.sql().prepare(QStringLiteral("SELECT text FROM message_log ORDER BY id"));
    store.sql().exec(query);
    QStringList lines;
    while (query.next()) {
        lines.append(query.value(0).toString());
    }
    return lines;
}

QString dasProgram()
{
    return QStringLiteral(OLVEX_DAS_PROGRAM);
}

} // namespace olvex::test
