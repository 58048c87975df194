#pragma once

#include "common/host.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
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

// A message-record writer that keeps every post. It can be told to refuse posts (all, or those
// a predicate picks); a refused post is still recorded, with written false.
class FakeMessageRecords : public MessageRecords
{
public:
    void PostMessageRecord(QString &errorText, const QString &siteId, const QString &recordType,
                           const QString &text, const QString &empty1, const QString &empty2,
                           const QString &sourceCode, bool &ok) override;

    const QList<PostedRecord> &posts() const { return m_posts; }
    // Only the posts that were written.
    QList<PostedRecord> writtenPosts() const;
    QList<PostedRecord> postsOfType(const QString &recordType) const;
    QList<PostedRecord> postsWithSource(const QString &sourceCode) const;
    QStringList texts() const;
    void clear() { m_posts.clear(); }

    // Every post fails with errorText; nullopt lets them succeed again.
    void setFailure(std::optional<QString> errorText);
    // Posts for which refuse returns true fail with errorText (replaces setFailure).
    void setFailure(std::function<bool(const PostedRecord &)> refuse, QString errorText);

private:
    QList<PostedRecord> m_posts;
    std::function<bool(const PostedRecord &)> m_refuse;
    QString m_failureText;
};

} // namespace olvex
