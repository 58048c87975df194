#pragma once

#include <QString>
#include <QStringList>

namespace olvex::test {

// A calibration start record with the given elements (name, then text; "Name@ioid" adds the
// attribute), one element a line as the service writes them.
inline QString calRecord(const QStringList &nameTextPairs)
{
    QString xml = QStringLiteral("<XValue>\n  <CalStart>\n");
    for (qsizetype i = 0; i + 1 < nameTextPairs.size(); i += 2) {
        const QString name = nameTextPairs.at(i).section(u'@', 0, 0);
        const QString ioid = nameTextPairs.at(i).section(u'@', 1);
        xml += u"    <" + name
               + (nameTextPairs.at(i).contains(u'@') ? u" ioid=\"" + ioid + u'"' : QString()) + u'>'
               + nameTextPairs.at(i + 1) + u"</" + name + u">\n";
    }
    return xml + u"  </CalStart>\n</XValue>";
}

} // namespace olvex::test
