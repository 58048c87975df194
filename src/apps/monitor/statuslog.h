#pragma once

#include "common/host.h"
#include "common/vocabulary.h"
#include "monitorwindow.h"

#include <QPointer>

#include <memory>

namespace olvex {

// The message log the window hands its components: lines go to the site's log as they are, and
// an error line also shows in the status bar. Several refusals (a manual start on a channel that
// may not be written, a calibration whose data has expired) are only logged; an operator who
// pressed a button must still see why nothing happened.
class StatusBarLog final : public MessageLog
{
public:
    StatusBarLog(std::shared_ptr<MessageLog> siteLog, MonitorWindow *window)
        : m_siteLog(std::move(siteLog))
        , m_window(window)
    {}

    void LogMessage(int severity, const QString &text) override
    {
        if (m_siteLog) {
            m_siteLog->LogMessage(severity, text);
        }
        show(severity, text);
    }
    void LogMessages(const QList<LogLine> &lines) override
    {
        if (m_siteLog) {
            m_siteLog->LogMessages(lines);
        }
        for (const LogLine &line : lines) {
            show(line.severity, line.text);
        }
    }

private:
    void show(int severity, const QString &text) const
    {
        if (severity == Severity::Error && m_window) {
            m_window->showProblem(text);
        }
    }

    std::shared_ptr<MessageLog> m_siteLog;
    QPointer<MonitorWindow> m_window;
};

} // namespace olvex
