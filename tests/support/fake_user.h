#pragma once

#include "common/host.h"

#include <QList>
#include <QSet>
#include <QString>

namespace olvex {

// The logged-on user: a name and a set of privilege numbers.
class FakeUser : public User
{
public:
    QString UserName() const override { return m_name; }
    bool HasPrivilege(int privilege) const override
    {
        m_queries.append(privilege);
        return m_privileges.contains(privilege);
    }

    void setName(const QString &name) { m_name = name; }
    void grant(int privilege) { m_privileges.insert(privilege); }
    void revoke(int privilege) { m_privileges.remove(privilege); }
    void setPrivileges(const QSet<int> &privileges) { m_privileges = privileges; }
    // Every privilege asked for, in order.
    const QList<int> &privilegeQueries() const { return m_queries; }

private:
    QString m_name = QStringLiteral("operator");
    QSet<int> m_privileges;
    mutable QList<int> m_queries;
};

} // namespace olvex
