#pragma once

#include "common/value.h"
#include "host/sitestore.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>

#include <memory>
#include <vector>

namespace olvex {

// Fills a new site fast: rows are buffered and inserted many to a statement with prepared
// statements, parents before children. Nothing is audited: creating a site changes no setting.
// Use inside the caller's write transaction (SiteStore::create's fill runs in one) and call
// flush() at the end; rows still buffered when the builder goes are dropped.
class SiteBuilder
{
public:
    explicit SiteBuilder(SiteStore &store);
    ~SiteBuilder();
    SiteBuilder(const SiteBuilder &) = delete;
    SiteBuilder &operator=(const SiteBuilder &) = delete;

    void addPlantUnit(int number, const QString &name);
    void addParameter(qint32 pid, const QString &name, int type, int plantUnit = 0,
                      const QString &unitsText = QString(), bool inError = false);
    void setAttribute(qint32 pid, int number, const Value &value);
    void setCurrentValue(qint32 pid, const Value &value, int status = 0,
                         const QDateTime &time = QDateTime());
    void setCurrentData(qint32 pid, const QString &key, const QString &text, int status = 0);
    void addUser(const QString &name, const QString &fullName, bool allPrivileges,
                 const QList<int> &privileges = {});
    void addChannel(int channel, int kind, const QString &name);
    void addCalCheck(qint32 calPid, qint32 cylinderPid, const QDateTime &started,
                     const QDateTime &ended, const QString &result, const QString &cylinderId,
                     const QDateTime &expiration, const QString &vendorId, const QString &gasCodes);

    void flush();

private:
    class Table;
    Table &table(int index);
    void added(Table &table);

    SiteStore &m_store;
    std::vector<std::unique_ptr<Table>> m_tables; // in the order their rows must be inserted
};

} // namespace olvex
