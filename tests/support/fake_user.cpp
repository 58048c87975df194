#include "support/fake_user.h"

namespace olvex {

bool FakeUser::HasPrivilege(int privilege) const
{
    m_queries.append(privilege);
    if (m_failure) {
        throw *m_failure;
    }
    return m_privileges.contains(privilege);
}

} // namespace olvex
