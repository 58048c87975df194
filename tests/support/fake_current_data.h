#pragma once

#include "common/error.h"
#include "common/host.h"

#include <QHash>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

namespace olvex {

class FakeCurrentDataItem : public CurrentDataItem
{
public:
    FakeCurrentDataItem(QString text, int status)
        : m_text(std::move(text))
        , m_status(status)
    {}
    QString Text() const override { return m_text; }
    int Status() const override { return m_status; }

private:
    QString m_text;
    int m_status;
};

// A current-data reader holding items set by the test, per PID and key. GetCurrentDataItem
// hands out a snapshot: changing an item later does not change one already handed out.
class FakeCurrentDataReader : public CurrentDataReader
{
public:
    std::shared_ptr<CurrentDataItem> GetCurrentDataItem(qint32 pid, const QString &key) override;

    void setItem(qint32 pid, const QString &text, int status = 0,
                 const QString &key = QStringLiteral("1m"));
    void removeItem(qint32 pid, const QString &key = QStringLiteral("1m"));
    // GetCurrentDataItem of this PID (any key) throws; nullopt turns it off.
    void setFailure(qint32 pid, std::optional<Error> error);

    struct Request
    {
        qint32 pid = 0;
        QString key;
        bool operator==(const Request &) const = default;
    };
    const QList<Request> &requests() const { return m_requests; }
    int requestCount(qint32 pid) const;

private:
    struct Item
    {
        QString text;
        int status = 0;
    };
    QHash<std::pair<qint32, QString>, Item> m_items;
    QHash<qint32, Error> m_failures;
    QList<Request> m_requests;
};

} // namespace olvex
