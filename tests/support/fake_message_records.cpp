#include "support/fake_message_records.h"

namespace olvex {

void FakeMessageRecords::PostMessageRecord(QString &errorText, const QString &siteId,
                                           const QString &recordType, const QString &text,
                                           const QString &empty1, const QString &empty2,
                                           const QString &sourceCode, bool &ok)
{
    PostedRecord record{errorText, siteId, recordType, text, empty1, empty2, sourceCode, true};
    if (m_refuse && m_refuse(record)) {
        record.written = false;
        errorText = m_failureText;
    } else {
        errorText.clear();
    }
    ok = record.written;
    m_posts.append(std::move(record));
}

QList<PostedRecord> FakeMessageRecords::writtenPosts() const
{
    QList<PostedRecord> result;
    for (const PostedRecord &r : m_posts) {
        if (r.written) {
            result.append(r);
        }
    }
    return result;
}

QList<PostedRecord> FakeMessageRecords::postsOfType(const QString &recordType) const
{
    QList<PostedRecord> result;
    for (const PostedRecord &r : m_posts) {
        if (r.recordType == recordType) {
            result.append(r);
        }
    }
    return result;
}

QList<PostedRecord> FakeMessageRecords::postsWithSource(const QString &sourceCode) const
{
    QList<PostedRecord> result;
    for (const PostedRecord &r : m_posts) {
        if (r.sourceCode == sourceCode) {
            result.append(r);
        }
    }
    return result;
}

QStringList FakeMessageRecords::texts() const
{
    QStringList result;
    for (const PostedRecord &r : m_posts) {
        result.append(r.text);
    }
    return result;
}

void FakeMessageRecords::setFailure(std::optional<QString> errorText)
{
    if (errorText) {
        m_refuse = [](const PostedRecord &) {
            return true;
        };
        m_failureText = *errorText;
    } else {
        m_refuse = nullptr;
        m_failureText.clear();
    }
}

void FakeMessageRecords::setFailure(std::function<bool(const PostedRecord &)> refuse,
                                    QString errorText)
{
    m_refuse = std::move(refuse);
    m_failureText = std::move(errorText);
}

} // namespace olvex
