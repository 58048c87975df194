#include "support/fake_security.h"

namespace olvex {

void FakeSecurity::Initialize(const QString &text1, const QString &text2, const QString &text3,
                              const QString &text4, const QString &clientName, int flags)
{
    m_initializeCalls.append({text1, text2, text3, text4, clientName, flags});
}

bool FakeSecurity::CanChangeSetting(qint32 pid, bool defined)
{
    m_queries.append({pid, defined});
    if (m_failure) {
        throw *m_failure;
    }
    if (!isInitialized()) {
        return false;
    }
    return m_perPid.value(pid, m_answer);
}

} // namespace olvex
