#include "common/text.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace olvex;

namespace {

TEST(Text, TextBetween)
{
    // Text, start and end marker, where to start, how to compare; the text found, where it was
    // found and where the search would go on.
    const std::tuple<const char *, const char *, const char *, int, Qt::CaseSensitivity,
                     const char *, int, int>
        cases[] = {
            {"a=1;b=2;", "b=", ";", 1, Qt::CaseSensitive, "2", 5, 9},
            {"a=1;b=2", "b=", ";", 1, Qt::CaseSensitive, "2", 5, 0},    // missing end: the rest
            {"a=1;b=2;", "B=", ";", 1, Qt::CaseSensitive, "", 0, 0},    // binary compare
            {"a=1;b=2;", "B=", ";", 1, Qt::CaseInsensitive, "2", 5, 9}, // text compare
            {"a=1;a=2;", "a=", ";", 2, Qt::CaseSensitive, "2", 5, 9},   // search from startAt
            {"|x|y|", "|", "", 1, Qt::CaseSensitive, "x", 1, 4},        // start marker ends too
        };
    for (const auto &[text, start, end, startAt, compare, expected, atFound, atNext] : cases) {
        int found = -1, next = -1;
        const QString result = TextBetween(QString::fromLatin1(text), QString::fromLatin1(start),
                                           QString::fromLatin1(end), startAt, compare, found, next);
        EXPECT_EQ(std::tuple(result, found, next),
                  std::tuple(QString::fromLatin1(expected), atFound, atNext))
            << text << " / " << start;
    }
}

TEST(Text, SortTextsOrdersByCharacterCode)
{
    const QList<QStringList> inputs = {{},
                                       {"only"},
                                       {"b", "B", "a", "A"},
                                       {"0010,x", "0002,y", "0002,a;0001,b", "0002,a"},
                                       {"same", "same", "Same"}};
    // A larger list exercises every gap of the sequence.
    QStringList many;
    for (int i = 0; i < 500; ++i)
        many << QString::number((i * 7919) % 1009);
    for (QStringList texts : inputs + QList<QStringList>{many}) {
        QStringList expected = texts;
        std::sort(expected.begin(), expected.end());
        SortTexts(texts);
        EXPECT_EQ(texts, expected);
    }
}

TEST(Text, RemoveEmptyTexts)
{
    const std::pair<QStringList, QStringList> cases[] = {
        {{"", "x", "", "y"}, {"x", "y"}}, {{"", "", ""}, {""}},   {{}, {""}},
        {{"a", "b"}, {"a", "b"}},         {{"a", "", ""}, {"a"}},
    };
    for (auto [in, out] : cases) {
        RemoveEmptyTexts(in);
        EXPECT_EQ(in, out);
    }
}

TEST(Text, AbsTextAndPlaceholders)
{
    EXPECT_EQ(AbsText(-32768), QStringLiteral("32768"));
    EXPECT_EQ(AbsText(32767), QStringLiteral("32767"));
    EXPECT_EQ(fillPlaceholders(QStringLiteral("Exported $count$ to '$file$'. $count$"),
                               {{QStringLiteral("count"), QStringLiteral("3")},
                                {QStringLiteral("file"), QStringLiteral("a.csv")}}),
              QStringLiteral("Exported 3 to 'a.csv'. 3"));
}

} // namespace
