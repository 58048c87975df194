#include "settings/settingfind.h"

#include "common/pid.h"

namespace olvex {

SettingFind::SettingFind(const QString &text)
    : m_text(text.trimmed())
    , m_pid(ParsePid(m_text))
{}

bool SettingFind::matches(const QString &name, qint32 pid) const
{
    if (m_text.isEmpty()) {
        return true;
    }
    if (m_pid != 0) {
        return pid == m_pid;
    }
    return name.contains(m_text, Qt::CaseInsensitive);
}

} // namespace olvex
