#pragma once

#include "common/olvexexport.h"

#include <QString>

namespace olvex {

// What the operator typed into Find: part of a setting's name (any case), or a PID in any form
// ParsePid reads ("1-234-5-67-89", "123456789"), which finds that setting alone.
class OLVEX_CORE_EXPORT SettingFind
{
public:
    SettingFind() = default;
    explicit SettingFind(const QString &text);

    bool isEmpty() const { return m_text.isEmpty(); }
    QString text() const { return m_text; }
    bool matches(const QString &name, qint32 pid) const;

private:
    QString m_text;
    qint32 m_pid = 0;
};

} // namespace olvex
