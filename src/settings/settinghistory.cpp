#include "settings/settinghistory.h"

#include "common/datetime.h"
#include "settings/settingdisplay.h"

namespace olvex {

QList<HistoryLine> historyLines(const Parameter &definition, const QList<AuditEntry> &entries,
                                MessageLog *messageLog)
{
    QList<HistoryLine> lines;
    lines.reserve(entries.size());
    for (const AuditEntry &entry : entries) {
        HistoryLine line;
        line.when = formatNamed(entry.when, NamedFormat::ShortDate) + u' '
                    + formatNamed(entry.when, NamedFormat::LongTime);
        line.user = entry.userName;
        line.client = entry.clientAddress.isEmpty() || entry.clientAddress == entry.clientName
                          ? entry.clientName
                          : entry.clientName + u" (" + entry.clientAddress + u')';
        line.oldValue = formatDefinitionValue(definition, entry.oldValue, messageLog).text;
        line.newValue = formatDefinitionValue(definition, entry.newValue, messageLog).text;
        lines.append(line);
    }
    return lines;
}

} // namespace olvex
