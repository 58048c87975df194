#pragma once

#include "common/error.h"
#include "common/host.h"

#include <QList>
#include <QSet>
#include <QString>

#include <optional>

namespace olvex {

// The logged-on user: a name and a set of privilege numbers.
class FakeUser : public User
{
public:
    explicit FakeUser(QString name = QStringLiteral("operator"), QSet<int> privileges = {})
        : m_name(std::move(name))
        , m_privileges(std::move(privileges))
    {}

    QString UserName() const override { return m_name; }
    bool HasPrivilege(int privilege) const override;

    void setName(const QString &name) { m_name = name; }
    void grant(int privilege) { m_privileges.insert(privilege); }
    void revoke(int privilege) { m_privileges.remove(privilege); }
    void setPrivileges(const QSet<int> &privileges) { m_privileges = privileges; }
    const QSet<int> &privileges() const { return m_privileges; }
    // Every privilege asked for, in order.
    const QList<int> &privilegeQueries() const { return m_queries; }
    // HasPrivilege throws; nullopt turns it off.
    void setFailure(std::optional<Error> error) { m_failure = std::move(error); }

private:
    QString m_name;
    QSet<int> m_privileges;
    mutable QList<int> m_queries;
    std::optional<Error> m_failure;
};

} // namespace olvex
