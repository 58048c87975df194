#include "common/text.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace olvex;

namespace {

TEST(Text, TextBetween)
{
    struct Case
    {
        const char *text, *start, *end;
        int startAt;
        Qt::CaseSensitivity compare;
        const char *expected;
        int found, next;
    } cases[] = {
        {"a=1;b=2;", "b=", ";", 1, Qt::CaseSensitive, "2", 5, 9},
        {"a=1;b=2;", "a=", ";", 1, Qt::CaseSensitive, "1", 1, 5},
        {"a=1;b=2;", "c=", ";", 1, Qt::CaseSensitive, "", 0, 0},   // absent start
        {"a=1;b=2", "b=", ";", 1, Qt::CaseSensitive, "2", 5, 0},    // missing end: the rest
        {"a=1;b=2;", "B=", ";", 1, Qt::CaseSensitive, "", 0, 0},    // binary compare
        {"a=1;b=2;", "B=", ";", 1, Qt::CaseInsensitive, "2", 5, 9}, // text compare
        {"a=1;a=2;", "a=", ";", 2, Qt::CaseSensitive, "2", 5, 9},   // search from startAt
        {"|x|y|", "|", "", 1, Qt::CaseSensitive, "x", 1, 4},        // start marker ends too
        {"<b>bold</b>", "<b>", "</b>", 1, Qt::CaseSensitive, "bold", 1, 9},
    };
    for (const Case &c : cases) {
        int found = -1;
        int next = -1;
        const QString result = TextBetween(QString::fromLatin1(c.text), QString::fromLatin1(c.start),
                                           QString::fromLatin1(c.end), c.startAt, c.compare, found,
                                           next);
        EXPECT_EQ(result, QString::fromLatin1(c.expected)) << c.text << " / " << c.start;
        EXPECT_EQ(found, c.found) << c.text << " / " << c.start;
        EXPECT_EQ(next, c.next) << c.text << " / " << c.start;
    }
}

TEST(Text, SortTextsOrdersByCharacterCode)
{
    const QList<QStringList> inputs = {
        {},
        {QStringLiteral("only")},
        {QStringLiteral("b"), QStringLiteral("B"), QStringLiteral("a"), QStringLiteral("A")},
        {QStringLiteral("0010,x"), QStringLiteral("0002,y"), QStringLiteral("0002,a;0001,b"),
         QStringLiteral("0002,a")},
        {QStringLiteral("same"), QStringLiteral("same"), QStringLiteral("Same")},
    };
    for (QStringList texts : inputs) {
        QStringList expected = texts;
        std::sort(expected.begin(), expected.end(),
                  [](const QString &l, const QString &r) { return l < r; });
        SortTexts(texts);
        EXPECT_EQ(texts, expected);
    }
    // A larger list exercises every gap of the sequence.
    QStringList many;
    for (int i = 0; i < 500; ++i) {
        many << QString::number((i * 7919) % 1009);
    }
    QStringList expected = many;
    std::sort(expected.begin(), expected.end());
    SortTexts(many);
    EXPECT_EQ(many, expected);
}

TEST(Text, RemoveEmptyTexts)
{
    struct Case
    {
        QStringList in, out;
    } cases[] = {
        {{"", "x", "", "y"}, {"x", "y"}},
        {{"", "", ""}, {""}},
        {{}, {""}},
        {{"a", "b"}, {"a", "b"}},
        {{"a", "", ""}, {"a"}},
    };
    for (Case &c : cases) {
        RemoveEmptyTexts(c.in);
        EXPECT_EQ(c.in, c.out);
    }
}

TEST(Text, AbsTextAndPlaceholders)
{
    EXPECT_EQ(AbsText(-32768), QStringLiteral("32768"));
    EXPECT_EQ(AbsText(32767), QStringLiteral("32767"));
    EXPECT_EQ(AbsText(-5), QStringLiteral("5"));
    EXPECT_EQ(AbsText(0), QStringLiteral("0"));
    EXPECT_EQ(fillPlaceholders(QStringLiteral("Exported $count$ to '$file$'. $count$"),
                               {{QStringLiteral("count"), QStringLiteral("3")},
                                {QStringLiteral("file"), QStringLiteral("a.csv")}}),
              QStringLiteral("Exported 3 to 'a.csv'. 3"));
}

} // namespace
