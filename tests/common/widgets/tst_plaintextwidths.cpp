// Column widths from summed glyph widths must match what the view's delegate measures.
#include "common/widgets/plaintextwidths.h"
#include "common/widgets/reportlist.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QPixmap>

#include <algorithm>

namespace olvex {
namespace {

// The width the delegate asks for the widest cell of column 1, or the header's if wider: what
// the view's own measuring gives for a list this short.
int measuredByTheView(const ReportList &list)
{
    int widest = list.header()->sectionSizeHint(1);
    for (int row = 0; row < list.rowCount(); ++row)
        widest = std::max(widest, list.sizeHintForIndex(list.model()->index(row, 1)).width());
    return widest;
}

TEST(PlainTextWidths, AutoSizedColumnsFitTheirWidestText)
{
    // What, column 1's texts, and whether its cells have an image (the view then measures by
    // itself).
    const std::tuple<const char *, QStringList, bool> cases[] = {
        {"numbers", {"1", "22.5", "-0.001", "1234.75", "1E+20"}, false},
        {"pairs the font may kern", {"AVAVAV", "To Yo", "WAVE", "LT.", "r,"}, false},
        {"text the sums cannot weigh", {"Grüße", "温度计", "x"}, false},
        {"header wider than every text", {"1", "2"}, false},
        {"with images", {"12.5", "a longer text"}, true},
    };
    const QIcon icon(QPixmap(16, 16));
    for (const auto &[what, texts, icons] : cases) {
        SCOPED_TRACE(what);
        ReportList list;
        list.setColumns({"Name", "Value here", "Rest"});
        for (const QString &text : texts) {
            QTreeWidgetItem *row = list.addRow({}, QStringLiteral("name"), {});
            row->setText(1, text);
            if (icons)
                row->setIcon(1, icon);
        }
        list.autoSizeColumn(1);
        EXPECT_EQ(list.columnWidth(1), measuredByTheView(list));
    }
}

} // namespace
} // namespace olvex
