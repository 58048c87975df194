#pragma once

#include "common/host.h"

#include <QList>
#include <QString>

#include <optional>
#include <ostream>

namespace olvex {

// One call of PostMessageRecord as the writer received it.
struct PostedRecord
{
    QString errorTextOnEntry; // what the caller left in errorText (it should have cleared it)
    QString siteId;
    QString recordType;
    QString text;
    QString empty1;
    QString empty2;
    QString sourceCode;
    bool written = false; // what the writer answered in ok
};

inline void PrintTo(const PostedRecord &r, std::ostream *os)
{
    *os << "PostedRecord(" << r.recordType.toStdString() << ", " << r.sourceCode.toStdString()
        << ", written=" << r.written << ", \"" << r.text.toStdString() << "\")";
}

// A message-record writer that keeps every post. Told to refuse, it still records each post,
// with written false.
class FakeMessageRecords : public MessageRecords
{
public:
    void PostMessageRecord(QString &errorText, const QString &siteId, const QString &recordType,
                           const QString &text, const QString &empty1, const QString &empty2,
                           const QString &sourceCode, bool &ok) override;

    const QList<PostedRecord> &posts() const { return m_posts; }
    // Every post fails with errorText; nullopt lets them succeed again.
    void setFailure(std::optional<QString> errorText) { m_failure = std::move(errorText); }

private:
    QList<PostedRecord> m_posts;
    std::optional<QString> m_failure;
};

} // namespace olvex
