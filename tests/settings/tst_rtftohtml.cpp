// The rich-text reader: which texts it refuses. What it keeps is checked on a real text
// document in the widget tests.
#include "common/error.h"
#include "settings/rtftohtml.h"

#include <gtest/gtest.h>

namespace olvex {
namespace {

TEST(RtfToHtml, RefusesTextItCannotRead)
{
    const std::vector<std::pair<const char *, QString>> cases = {
        {"plain text", "Just words"},
        {"unclosed group", "{\\rtf1 text"},
        {"closing brace too many", "{\\rtf1 text}}"},
        {"text after the document", "{\\rtf1 text} more"},
        {"cut-off hex escape", "{\\rtf1 caf\\'e"},
        {"bad hex escape", "{\\rtf1 caf\\'zz}"},
        {"sign without number", "{\\rtf1 \\fs- text}"},
        {"number too long", "{\\rtf1 \\fs12345678901 text}"},
        {"control word too long", "{\\rtf1 \\" + QString(40, u'a') + " text}"},
        {"nesting too deep", "{\\rtf1 " + QString(300, u'{') + QString(300, u'}') + "}"},
    };
    for (const auto &[name, text] : cases) {
        SCOPED_TRACE(name);
        try {
            rtfToHtml(text);
            ADD_FAILURE() << "accepted";
        } catch (const Error &e) {
            EXPECT_EQ(e.number(), kUnreadableRichText);
            EXPECT_FALSE(e.description().isEmpty());
        }
    }
}

TEST(RtfToHtml, EscapesMarkupAndAllowsBlanksAfterTheDocument)
{
    const QString html = rtfToHtml(QStringLiteral("{\\rtf1 a<b & \"c\"}"));
    EXPECT_TRUE(html.contains(u"a&lt;b &amp; &quot;c&quot;")) << html.toStdString();
    EXPECT_FALSE(html.contains(u"a<b"));
    EXPECT_NO_THROW(rtfToHtml(QStringLiteral("{\\rtf1 text}\r\n") + QChar(0) + u' '));
}

TEST(LooksLikeRtf, OnlyTheDocumentHeader)
{
    EXPECT_TRUE(looksLikeRtf(QStringLiteral("{\\rtf1\\ansi x}")));
    EXPECT_FALSE(looksLikeRtf(QStringLiteral(" {\\rtf1 x}"))); // the caller trims first
    EXPECT_FALSE(looksLikeRtf(QStringLiteral("{\\rtf2 x}")));
    EXPECT_FALSE(looksLikeRtf(QStringLiteral("Set the span gas first.")));
}

} // namespace
} // namespace olvex
