#include "importexport/windows1252.h"

#include "support/printers.h"

#include <gtest/gtest.h>

using namespace olvex;
using namespace Qt::StringLiterals;

namespace {

TEST(Windows1252, EveryByteSurvivesARoundTrip)
{
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(char(b));
    const QString text = fromWindows1252(all);
    ASSERT_EQ(text.size(), 256);
    EXPECT_EQ(toWindows1252(text), all);
}

TEST(Windows1252, MapsTheCharactersWhereLatin1Differs)
{
    const struct
    {
        unsigned char byte;
        char16_t unicode;
    } cases[] = {
        {0x80, u'\u20AC'}, // euro sign
        {0x84, u'\u201E'}, // double low-9 quotation mark
        {0x85, u'\u2026'}, // ellipsis
        {0x8A, u'\u0160'},
        {0x93, u'\u201C'},
        {0x94, u'\u201D'},
        {0x96, u'\u2013'},
        {0x99, u'\u2122'},
        {0x9F, u'\u0178'},
        {0x81, u'\u0081'}, // undefined in the code page: kept
                           // as the control code
        {0xB0, u'\u00B0'}, // degree sign, same as Latin-1
        {0xE9, u'\u00E9'},
        {0x41, u'A'},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(int(c.byte));
        const QByteArray byte(1, char(c.byte));
        EXPECT_EQ(fromWindows1252(byte), QString(QChar(c.unicode)));
        EXPECT_EQ(toWindows1252(QString(QChar(c.unicode))), byte);
    }
}

TEST(Windows1252, WritesWhatItCannotHoldAsQuestionMarks)
{
    // U+0080 is a Latin-1 code, but not a Windows-1252 one; one '?' per character, also for a
    // character outside the basic plane.
    const QString text = u"a\u0080b\u4E2Dc"_s + QString::fromUcs4(U"\U0001F600") + u"d"_s;
    EXPECT_EQ(toWindows1252(text), QByteArray("a?b?c?d"));
}

TEST(Windows1252, AppendsAfterWhatIsThere)
{
    QByteArray out("x");
    appendWindows1252(out, u"\u20AC");
    EXPECT_EQ(out, QByteArray("x\x80"));
}

} // namespace
