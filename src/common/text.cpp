#include "common/text.h"

#include <cstdlib>

namespace olvex {

QString TextBetween(const QString &text, const QString &startMarker, const QString &endMarker,
                    int startAt, Qt::CaseSensitivity compare, int &foundAt, int &nextAt)
{
    const QString &end = endMarker.isEmpty() ? startMarker : endMarker;
    foundAt = 0;
    nextAt = 0;
    if (startMarker.isEmpty() || startAt < 1) {
        return {};
    }
    const qsizetype start = text.indexOf(startMarker, startAt - 1, compare);
    if (start < 0) {
        return {};
    }
    foundAt = int(start) + 1;
    const qsizetype contentStart = start + startMarker.size();
    const qsizetype e = text.indexOf(end, contentStart, compare);
    if (e < 0) {
        return text.mid(contentStart);
    }
    nextAt = int(e) + 1 + 1; // 1-based position of the end marker, plus one
    return text.mid(contentStart, e - contentStart);
}

void SortTexts(QStringList &texts)
{
    const qsizetype n = texts.size();
    qsizetype h = 1;
    while (h <= n) {
        h = 3 * h + 1;
    }
    do {
        h /= 3;
        for (qsizetype i = h; i < n; ++i) {
            QString entry = texts[i];
            qsizetype j = i;
            while (j >= h && QString::compare(texts[j - h], entry, Qt::CaseSensitive) > 0) {
                texts[j] = texts[j - h];
                j -= h;
            }
            texts[j] = std::move(entry);
        }
    } while (h > 1);
}

void RemoveEmptyTexts(QStringList &texts)
{
    qsizetype kept = 0;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        if (!texts[i].isEmpty()) {
            if (i != kept) {
                texts[kept] = texts[i];
            }
            ++kept;
        }
    }
    if (kept == 0) {
        texts = QStringList{QString()};
        return;
    }
    texts.resize(kept);
}

QString AbsText(qint16 n)
{
    return QString::number(std::abs(int(n)));
}

QString fillPlaceholders(QString text, std::initializer_list<std::pair<QString, QString>> pairs)
{
    for (const auto &[name, value] : pairs) {
        text.replace(u'$' + name + u'$', value);
    }
    return text;
}

} // namespace olvex
