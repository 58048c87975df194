// What the rich-text reader keeps, seen on the text document the instructions box shows.
#include "settings/rtftohtml.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace olvex {
namespace {

QTextCharFormat formatAt(QTextDocument &doc, const QString &word)
{
    const QTextCursor found = doc.find(word);
    EXPECT_FALSE(found.isNull()) << word.toStdString();
    QTextCursor at(&doc);
    at.setPosition(found.selectionStart() + 1);
    return at.charFormat();
}

class RenderedRtf : public ::testing::Test
{
protected:
    void load(const QString &rtf) { doc.setHtml(rtfToHtml(rtf)); }
    QTextDocument doc;
};

TEST_F(RenderedRtf, KeepsTheTextItsParagraphsAndTheirAlignment)
{
    load(QStringLiteral(
        "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}}"
        "{\\*\\generator Editor 1.0;}{\\info{\\title Hidden}}"
        "\\pard\\qc First line\\par\\pard Second\\line same paragraph\\par\\par Last}"));
    EXPECT_EQ(doc.blockCount(), 4);
    EXPECT_EQ(doc.findBlockByNumber(0).text(), QStringLiteral("First line"));
    EXPECT_EQ(doc.findBlockByNumber(1).text(), QString::fromUtf16(u"Second\u2028same paragraph"));
    EXPECT_EQ(doc.findBlockByNumber(2).text(), QString());
    EXPECT_EQ(doc.findBlockByNumber(3).text(), QStringLiteral("Last"));
    const auto alignment = [&](int block) {
        return doc.findBlockByNumber(block).blockFormat().alignment() & Qt::AlignHorizontal_Mask;
    };
    EXPECT_EQ(alignment(0), Qt::AlignHCenter);
    EXPECT_EQ(alignment(1), Qt::AlignLeft); // \pard ends the centring
    EXPECT_FALSE(doc.toPlainText().contains(u"Arial"));
    EXPECT_FALSE(doc.toPlainText().contains(u"Hidden"));
    EXPECT_FALSE(doc.toPlainText().contains(u"Editor"));
}

TEST_F(RenderedRtf, KeepsCharacterFormats)
{
    load(QStringLiteral("{\\rtf1{\\colortbl ;\\red200\\green0\\blue0;\\red0\\green0\\blue255;}"
                        "plain \\b bold\\b0  \\i italic\\i0  \\ul under\\ulnone  "
                        "{\\fs36 large} \\cf1 red\\cf2  blue\\cf0  {\\b\\i both} after}"));
    EXPECT_EQ(doc.toPlainText(),
              QStringLiteral("plain bold italic under large red blue both after"));
    // Word, bold, italic, underlined: a group ends what it switched on.
    const std::vector<std::tuple<QString, bool, bool, bool>> cases = {
        {"plain", false, false, false}, {"bold", true, false, false},
        {"italic", false, true, false}, {"under", false, false, true},
        {"large", false, false, false}, {"both", true, true, false},
        {"after", false, false, false},
    };
    for (const auto &[word, bold, italic, underlined] : cases) {
        const QTextCharFormat format = formatAt(doc, word);
        EXPECT_EQ(format.fontWeight(), int(bold ? QFont::Bold : QFont::Normal))
            << word.toStdString();
        EXPECT_EQ(format.fontItalic(), italic) << word.toStdString();
        EXPECT_EQ(format.fontUnderline(), underlined) << word.toStdString();
    }
    EXPECT_DOUBLE_EQ(formatAt(doc, "large").fontPointSize(), 18.0);
    EXPECT_EQ(formatAt(doc, "red").foreground().color(), QColor(200, 0, 0));
    EXPECT_EQ(formatAt(doc, "blue").foreground().color(), QColor(0, 0, 255));
    // \cf0 is the automatic colour again.
    EXPECT_FALSE(formatAt(doc, "after").hasProperty(QTextFormat::ForegroundBrush));
}

TEST_F(RenderedRtf, ReadsEscapesAsWindows1252AndUnicode)
{
    const std::vector<std::pair<const char *, QString>> cases = {
        {"{\\rtf1 caf\\'e9}", QString::fromUtf16(u"caf\u00e9")},
        {"{\\rtf1 \\'80 \\'93q\\'94 \\'85}", QString::fromUtf16(u"\u20ac \u201cq\u201d \u2026")},
        {"{\\rtf1 \\u8364? euro}", QString::fromUtf16(u"\u20ac euro")},
        {"{\\rtf1 \\uc2\\u8364\\'80\\'80 two}", QString::fromUtf16(u"\u20ac two")},
        {"{\\rtf1 \\uc0\\u945 alpha}", QString::fromUtf16(u"\u03b1alpha")},
        {"{\\rtf1 \\u-3913?}", QString::fromUtf16(u"\uf0b7")},
        {"{\\rtf1 a\\~b\\{c\\}\\\\d\\tab e}", QString::fromUtf16(u"a\u00a0b{c}\\d\te")},
        {"{\\rtf1 \\ldblquote x\\rdblquote\\emdash y}",
         QString::fromUtf16(u"\u201cx\u201d\u2014y")},
    };
    for (const auto &[rtf, text] : cases) {
        load(QString::fromLatin1(rtf));
        EXPECT_EQ(doc.toRawText(), text) << rtf; // raw: keeps the no-break space
    }
}

} // namespace
} // namespace olvex
