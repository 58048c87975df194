#pragma once

// The 100,000 mixed lines both parsers read: mostly plain lines as an export writes them,
// a share with quoted fields (commas, doubled quotes), and read-only lines with six fields.

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace olvex::bench {

inline QStringList mixedCsvLines(int count = 100000)
{
    QStringList lines;
    lines.reserve(count);
    for (int i = 0; i < count; ++i) {
        const QString pid = QStringLiteral("1-%1-%2-%3-%4")
                                .arg(400 + i / 20000)
                                .arg(i % 3)
                                .arg((i / 100) % 100, 2, 10, QLatin1Char('0'))
                                .arg(i % 100, 2, 10, QLatin1Char('0'));
        switch (i % 10) {
        case 0:
        case 1:
        case 2:
            lines.append(pid + QStringLiteral(",\"lb/hr, avg\",\"Limit, hourly ")
                         + QString::number(i) + QStringLiteral("\",\"say \"\"hi\"\" ")
                         + QString::number(i % 7) + QStringLiteral("\","));
            break;
        case 3:
            lines.append(pid + QStringLiteral(",,Serial Number ") + QString::number(i)
                         + QStringLiteral(",SN-") + QString::number(i * 7)
                         + QStringLiteral(",,Read only"));
            break;
        default:
            lines.append(pid + QStringLiteral(",ppm,SO2 Span Limit ") + QString::number(i)
                         + QStringLiteral(",") + QString::number(i % 1000 / 4.0)
                         + QStringLiteral(",100"));
            break;
        }
    }
    return lines;
}

inline std::vector<std::string> toStdLines(const QStringList &lines)
{
    std::vector<std::string> out;
    out.reserve(size_t(lines.size()));
    for (const QString &line : lines)
        out.push_back(line.toStdString());
    return out;
}

} // namespace olvex::bench
