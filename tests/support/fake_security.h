#pragma once

#include "common/error.h"
#include "common/host.h"

#include <QHash>
#include <QList>
#include <QString>

#include <optional>

namespace olvex {

// A security object whose answers the test sets. Like the real one it refuses everything until
// Initialize was called; after that CanChangeSetting answers per PID where the test said so,
// and with the general answer (true unless set) otherwise.
class FakeSecurity : public Security
{
public:
    struct InitializeCall
    {
        QString text1;
        QString text2;
        QString text3;
        QString text4;
        QString clientName;
        int flags = 0;
        bool operator==(const InitializeCall &) const = default;
    };
    struct Query
    {
        qint32 pid = 0;
        bool defined = false;
        bool operator==(const Query &) const = default;
    };

    void Initialize(const QString &text1, const QString &text2, const QString &text3,
                    const QString &text4, const QString &clientName, int flags) override
    {
        m_initializeCalls.append({text1, text2, text3, text4, clientName, flags});
    }
    bool CanChangeSetting(qint32 pid, bool defined) override;

    void setCanChangeSetting(bool answer) { m_answer = answer; }
    void setCanChangeSetting(qint32 pid, bool answer) { m_perPid.insert(pid, answer); }
    // CanChangeSetting throws this error; nullopt turns it off.
    void setFailure(std::optional<Error> error) { m_failure = std::move(error); }

    const QList<InitializeCall> &initializeCalls() const { return m_initializeCalls; }
    const QList<Query> &queries() const { return m_queries; }

private:
    bool m_answer = true;
    QHash<qint32, bool> m_perPid;
    std::optional<Error> m_failure;
    QList<InitializeCall> m_initializeCalls;
    QList<Query> m_queries;
};

} // namespace olvex
