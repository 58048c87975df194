#include "common/widgets/uiservices.h"

#include "common/widgets/qtuiservices.h"

#include <QStringList>

namespace olvex {

UiServices &UiServices::qt()
{
    static QtUiServices instance;
    return instance;
}

namespace {

// "*.txt; *.log" and "*.txt *.log" name the same patterns.
QString normalisedPatterns(QString patterns)
{
    return patterns.replace(u';', u' ').simplified();
}

} // namespace

QString toQtFileFilter(const QString &hostFilter)
{
    // The host's form alternates descriptions and patterns: "Text|*.txt;*.log|All|*.*".
    // Qt reads the patterns from the description's last parentheses, split at blanks, so a
    // description that does not already end in its own patterns gets them appended.
    const QStringList parts = hostFilter.split(u'|');
    QStringList filters;
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        const QString description = parts.at(i).trimmed();
        QString patterns = normalisedPatterns(i + 1 < parts.size() ? parts.at(i + 1) : QString());
        if (description.isEmpty() && patterns.isEmpty()) {
            continue;
        }
        if (patterns.isEmpty()) {
            patterns = QStringLiteral("*");
        }
        const qsizetype open = description.lastIndexOf(u'(');
        const bool endsInOwnPatterns
            = description.endsWith(u')') && open >= 0
              && normalisedPatterns(description.mid(open + 1, description.size() - open - 2))
                     == patterns;
        if (endsInOwnPatterns) {
            // Qt splits the patterns at blanks only: rewrite "(*.txt; *.log)" as "(*.txt *.log)".
            filters.append(description.left(open) + u'(' + patterns + u')');
        } else if (description.isEmpty()) {
            filters.append(u'(' + patterns + u')');
        } else {
            filters.append(description + u" (" + patterns + u')');
        }
    }
    return filters.join(QStringLiteral(";;"));
}

} // namespace olvex
