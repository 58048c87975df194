#pragma once

#include "common/host.h"
#include "host/sitecontext.h"

#include <memory>

namespace olvex {

// The smaller host objects over the site store.

class SitePidDirectory final : public PidDirectory
{
public:
    explicit SitePidDirectory(std::shared_ptr<SiteContext> context);
    bool PidExists(qint32 pid) const override;
    ParameterPtr GetPid(qint32 pid, bool definition = true) const override;
    // The definitions the cache lacks in one batch, the live states of the whole list in
    // another: each object's first read of its value and of its change-pending flag is served
    // from that (see SiteParameter); every call reads them afresh.
    ParameterList GetPids(const QList<qint32> &pids) const override;

private:
    std::shared_ptr<SiteContext> m_context;
};

class SiteUnitsLookup final : public UnitsLookup
{
public:
    explicit SiteUnitsLookup(std::shared_ptr<SiteContext> context);
    QString UnitsText(qint32 pid) const override;

private:
    std::shared_ptr<SiteContext> m_context;
};

class SiteUser final : public User
{
public:
    explicit SiteUser(UserRecord record)
        : m_record(std::move(record))
    {}
    QString UserName() const override { return m_record.name; }
    bool HasPrivilege(int privilege) const override { return m_record.has(privilege); }

private:
    UserRecord m_record;
};

// Posts into the site's command-record queue. The site id must be this site's; failures come
// back through ok and errorText, never as exceptions.
class SiteMessageRecords final : public MessageRecords
{
public:
    explicit SiteMessageRecords(std::shared_ptr<SiteContext> context);
    void PostMessageRecord(QString &errorText, const QString &siteId, const QString &recordType,
                           const QString &text, const QString &empty1, const QString &empty2,
                           const QString &sourceCode, bool &ok) override;

private:
    std::shared_ptr<SiteContext> m_context;
};

// The site's message log. A line that cannot be stored is dropped: the log is where failures
// are reported, so its own failure has nowhere else to go.
class SiteMessageLog final : public MessageLog
{
public:
    explicit SiteMessageLog(std::shared_ptr<SiteContext> context);
    void LogMessage(int severity, const QString &text) override;
    void LogMessages(const QList<LogLine> &lines) override;

private:
    std::shared_ptr<SiteContext> m_context;
};

class SiteCurrentDataItem final : public CurrentDataItem
{
public:
    SiteCurrentDataItem(QString text, int status)
        : m_text(std::move(text))
        , m_status(status)
    {}
    QString Text() const override { return m_text; }
    int Status() const override { return m_status; }

private:
    QString m_text;
    int m_status;
};

// Items of the current data ("1m" of a calibration parameter: its calibration start record as
// text, status 71 when the realtime data has expired), read afresh on every call.
class SiteCurrentDataReader final : public CurrentDataReader
{
public:
    explicit SiteCurrentDataReader(std::shared_ptr<SiteStore> store);
    std::shared_ptr<CurrentDataItem> GetCurrentDataItem(qint32 pid, const QString &key) override;

private:
    std::shared_ptr<SiteStore> m_store;
};

} // namespace olvex
