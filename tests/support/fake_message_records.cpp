#include "support/fake_message_records.h"

namespace olvex {

void FakeMessageRecords::PostMessageRecord(QString &errorText, const QString &siteId,
                                           const QString &recordType, const QString &text,
                                           const QString &empty1, const QString &empty2,
                                           const QString &sourceCode, bool &ok)
{
    ok = !m_failure;
    m_posts.append({errorText, siteId, recordType, text, empty1, empty2, sourceCode, ok});
    errorText = m_failure.value_or(QString());
}

} // namespace olvex
