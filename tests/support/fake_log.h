#pragma once

#include "common/error.h"
#include "common/host.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <ostream>

namespace olvex {

inline void PrintTo(const LogLine &line, std::ostream *os)
{
    *os << '(' << line.severity << ", \"" << line.text.toStdString() << "\")";
}

// A message log that keeps every line, for tests to read back.
class RecordingLog : public MessageLog
{
public:
    void LogMessage(int severity, const QString &text) override;

    const QList<LogLine> &lines() const { return m_lines; }
    QStringList texts() const;
    bool isEmpty() const { return m_lines.isEmpty(); }
    void clear() { m_lines.clear(); }
    // Lines that start with code, e.g. "CSET-0084" or "[CSET-0066]".
    QList<LogLine> linesStartingWith(const QString &code) const;

    // From now on every LogMessage throws this error (after recording the line), to check that
    // a caller survives a failing log. nullopt turns it off.
    void setFailure(std::optional<Error> error) { m_failure = std::move(error); }

private:
    QList<LogLine> m_lines;
    std::optional<Error> m_failure;
};

} // namespace olvex
