#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QStringView>

#include <array>
#include <optional>
#include <vector>

namespace olvex {

// Widths of plain ASCII texts in one font, summed from the advance of each character and the
// kerning of each adjacent pair, both learnt from the font the first time a text needs them.
// Measuring a text through the font's shaping costs a microsecond or more; the sum costs a few
// table lookups, so a list can weigh thousands of texts and measure only the widest. The sum is
// exact for text the font shapes by advances and pair kerning alone (no ligatures or contextual
// forms); a caller that relies on it checks it against exactWidth() on the text that matters.
class PlainTextWidths
{
public:
    explicit PlainTextWidths(const QFont &font);

    // nullopt for text with a character outside printable ASCII: only the font can tell.
    std::optional<qreal> width(QStringView text);
    qreal exactWidth(const QString &text) const;

private:
    static constexpr int kFirst = 0x20;
    static constexpr int kCount = 0x7f - kFirst;

    qreal advance(int index);
    qreal kerning(int left, int right);

    QFontMetricsF m_metrics;
    std::array<qreal, kCount> m_advances;
    std::vector<qreal> m_kerning; // kCount x kCount, NaN until learnt
};

} // namespace olvex
