#include "common/widgets/plaintextwidths.h"

#include <cmath>
#include <limits>

namespace olvex {

namespace {

constexpr qreal kUnknown = std::numeric_limits<qreal>::quiet_NaN();

} // namespace

PlainTextWidths::PlainTextWidths(const QFont &font)
    : m_metrics(font)
    , m_kerning(size_t(kCount) * kCount, kUnknown)
{
    m_advances.fill(kUnknown);
}

qreal PlainTextWidths::advance(int index)
{
    qreal &known = m_advances[size_t(index)];
    if (std::isnan(known)) {
        known = m_metrics.horizontalAdvance(QChar(char16_t(kFirst + index)));
    }
    return known;
}

qreal PlainTextWidths::kerning(int left, int right)
{
    qreal &known = m_kerning[size_t(left) * kCount + size_t(right)];
    if (std::isnan(known)) {
        const QChar pair[2] = {QChar(char16_t(kFirst + left)), QChar(char16_t(kFirst + right))};
        known = m_metrics.horizontalAdvance(QString(pair, 2)) - advance(left) - advance(right);
    }
    return known;
}

std::optional<qreal> PlainTextWidths::width(QStringView text)
{
    qreal sum = 0;
    int previous = -1;
    for (const QChar c : text) {
        const int index = int(c.unicode()) - kFirst;
        if (index < 0 || index >= kCount) {
            return std::nullopt;
        }
        sum += advance(index);
        if (previous >= 0) {
            sum += kerning(previous, index);
        }
        previous = index;
    }
    return sum;
}

qreal PlainTextWidths::exactWidth(const QString &text) const
{
    return m_metrics.horizontalAdvance(text);
}

} // namespace olvex
