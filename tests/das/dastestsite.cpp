#include "dastestsite.h"

#include "common/pid.h"
#include "das/calrecord.h"
#include "das/dasservice.h"
#include "host/sitebuilder.h"

#include <algorithm>

namespace olvex::test {

std::shared_ptr<SiteStore> createServiceSite(const QString &connectionText, int settings,
                                             QList<qint32> &pids)
{
    pids.clear();
    for (int i = 0; i < settings; ++i) {
        pids.append(BuildPid(1, 300 + i / 100, 0, 1, i % 100));
    }
    SiteInfo info;
    info.siteId = QStringLiteral("DASTEST");
    info.name = QStringLiteral("Service test site");
    return SiteStore::create(connectionText, info, false, [&](SiteStore &site) {
        SiteBuilder builder(site);
        for (const qint32 pid : pids) {
            builder.addParameter(pid, u"Setting " + QString::number(pid), 4);
            builder.setAttribute(pid, -14, Value(1));    // a number
            builder.setAttribute(pid, -9, Value(true));  // readable
            builder.setAttribute(pid, -10, Value(true)); // changeable
            builder.setCurrentValue(pid, Value(0));
        }
        builder.addUser(kOperator.userName, QStringLiteral("Plant operator"), true);
        builder.flush();
    });
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

CommandRecord carryOut(SiteStore &store, DasService &service, const QString &recordType,
                       const QString &text, const QString &sourceCode)
{
    const qint64 id
        = CommandQueue(store).postCommand(store.siteId(), recordType, text, sourceCode, kOperator);
    while (service.runOnce() > 0) {
    }
    return commandRecord(store, id);
}

CommandRecord commandRecord(SiteStore &store, qint64 id)
{
    const QList<CommandRecord> records = CommandQueue(store).commands();
    const auto it = std::ranges::find(records, id, &CommandRecord::id);
    return it == records.cend() ? CommandRecord() : *it;
}

QString calElement(SiteStore &store, qint32 calPid, const QString &name)
{
    return calStartElement(readCalRecord(store, calPid), name)
        .value_or(QStringLiteral("<missing>"));
}

QString dasProgram()
{
    return QStringLiteral(OLVEX_DAS_PROGRAM);
}

} // namespace olvex::test
