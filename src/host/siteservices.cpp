#include "host/siteservices.h"

#include "common/error.h"
#include "common/pid.h"
#include "host/commandqueue.h"
#include "host/siteparameter.h"
#include "host/storeerrors.h"

namespace olvex {

SitePidDirectory::SitePidDirectory(std::shared_ptr<SiteContext> context)
    : m_context(std::move(context))
{}

bool SitePidDirectory::PidExists(qint32 pid) const
{
    return m_context->cache.find(pid) != nullptr;
}

ParameterPtr SitePidDirectory::GetPid(qint32 pid, bool) const
{
    DefinitionCache::Record record = m_context->cache.find(pid);
    if (!record) {
        const QString shown = FormatPid(pid).isEmpty() ? QString::number(pid) : FormatPid(pid);
        throw Error(StoreError::UnknownPid, u"PID " + shown + u" is not defined");
    }
    return std::make_shared<SiteParameter>(m_context, std::move(record));
}

ParameterList SitePidDirectory::GetPids(const QList<qint32> &pids) const
{
    const QList<DefinitionCache::Record> records = m_context->cache.findAll(pids);
    QList<qint32> defined;
    defined.reserve(pids.size());
    for (const DefinitionCache::Record &record : records) {
        if (record) {
            defined.append(record->pid);
        }
    }
    QHash<qint32, LiveState> live = m_context->store->liveStates(defined);
    const auto readAt = std::chrono::steady_clock::now();
    ParameterList parameters;
    parameters.reserve(pids.size());
    for (const DefinitionCache::Record &record : records) {
        parameters.append(record ? std::make_shared<SiteParameter>(m_context, record,
                                                                   live.value(record->pid), readAt)
                                 : nullptr);
    }
    return parameters;
}

SiteUnitsLookup::SiteUnitsLookup(std::shared_ptr<SiteContext> context)
    : m_context(std::move(context))
{}

QString SiteUnitsLookup::UnitsText(qint32 pid) const
{
    const DefinitionCache::Record record = m_context->cache.find(pid);
    return record ? record->unitsText : QString();
}

SiteMessageRecords::SiteMessageRecords(std::shared_ptr<SiteContext> context)
    : m_context(std::move(context))
{}

void SiteMessageRecords::PostMessageRecord(QString &errorText, const QString &siteId,
                                           const QString &recordType, const QString &text,
                                           const QString &, const QString &,
                                           const QString &sourceCode, bool &ok)
{
    errorText.clear();
    ok = false;
    try {
        const QString ownSite = m_context->store->siteId();
        if (siteId.compare(ownSite, Qt::CaseInsensitive) != 0) {
            errorText = u"site ID '" + siteId + u"' is not this site's ('" + ownSite + u"')";
            return;
        }
        if (recordType.trimmed().isEmpty()) {
            errorText = QStringLiteral("a message record needs a record type");
            return;
        }
        CommandQueue(*m_context->store)
            .postCommand(ownSite, recordType, text, sourceCode, m_context->actor);
        ok = true;
    } catch (...) {
        errorText = currentError().description;
    }
}

SiteMessageLog::SiteMessageLog(std::shared_ptr<SiteContext> context)
    : m_context(std::move(context))
{}

void SiteMessageLog::LogMessage(int severity, const QString &text)
{
    try {
        m_context->store->logMessage(severity, text, m_context->actor);
    } catch (...) {
        // Nowhere left to report it.
    }
}

void SiteMessageLog::LogMessages(const QList<LogLine> &lines)
{
    try {
        SiteStore &store = *m_context->store;
        Transaction transaction(store.sql(), SqlConnection::TransactionKind::Write);
        for (const LogLine &line : lines) {
            store.logMessage(line.severity, line.text, m_context->actor);
        }
        transaction.commit();
    } catch (...) {
        // Nowhere left to report it.
    }
}

SiteCurrentDataReader::SiteCurrentDataReader(std::shared_ptr<SiteStore> store)
    : m_store(std::move(store))
{}

std::shared_ptr<CurrentDataItem> SiteCurrentDataReader::GetCurrentDataItem(qint32 pid,
                                                                           const QString &key)
{
    const auto item = m_store->currentData(pid, key);
    if (!item) {
        return nullptr;
    }
    return std::make_shared<SiteCurrentDataItem>(item->text, item->status);
}

} // namespace olvex
