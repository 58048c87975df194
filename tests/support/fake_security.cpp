#include "support/fake_security.h"

namespace olvex {

bool FakeSecurity::CanChangeSetting(qint32 pid, bool defined)
{
    m_queries.append({pid, defined});
    if (m_failure) {
        throw *m_failure;
    }
    return !m_initializeCalls.isEmpty() && m_perPid.value(pid, m_answer);
}

} // namespace olvex
