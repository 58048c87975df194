#include "support/fake_log.h"

namespace olvex {

void RecordingLog::LogMessage(int severity, const QString &text)
{
    m_lines.append({severity, text});
    if (m_failure) {
        throw *m_failure;
    }
}

QStringList RecordingLog::texts() const
{
    QStringList result;
    for (const LogLine &line : m_lines) {
        result.append(line.text);
    }
    return result;
}

QList<LogLine> RecordingLog::linesStartingWith(const QString &code) const
{
    QList<LogLine> result;
    for (const LogLine &line : m_lines) {
        if (line.text.startsWith(code)) {
            result.append(line);
        }
    }
    return result;
}

} // namespace olvex
