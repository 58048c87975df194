#include "importexport/csvline.h"

#include "support/printers.h"

#include <gtest/gtest.h>

#include <optional>

using namespace olvex;
using namespace Qt::StringLiterals;

namespace {

struct ParseCase
{
    const char16_t *line;
    std::optional<QStringList> fields; // nullopt: the line must be refused
    const char *error = "";
};

const ParseCase kParseCases[] = {
    // Lines without quotes are split as they stand.
    {u"", QStringList{}},
    {u"a", QStringList{"a"}},
    {u"a,b,", QStringList{"a", "b", ""}},
    {u",", QStringList{"", ""}},
    {u" a , b ", QStringList{" a ", " b "}},
    {u"1-234-5-67-89,ppm,SO2 span,12.5,10",
     QStringList{"1-234-5-67-89", "ppm", "SO2 span", "12.5", "10"}},
    // Quoted fields.
    {u"a,\"b,c\",d", QStringList{"a", "b,c", "d"}},
    {u"\"x\"\"y\"", QStringList{"x\"y"}},
    {u"\"\"\"\"", QStringList{"\""}},
    {u"\"a\"\"\"", QStringList{"a\""}},
    {u"\"\",\"\"", QStringList{"", ""}},
    {u"\"a\",", QStringList{"a", ""}},
    {u"a,\"\"", QStringList{"a", ""}},
    {u",\"a\",,", QStringList{"", "a", "", ""}},
    {u"x,\"y\"", QStringList{"x", "y"}},
    {u"\"\u20AC,\u00B0\",z", QStringList{u"\u20AC,\u00B0"_s, "z"}},
    // A quote that does not open a field is an ordinary character.
    {u"ab\"c,d", QStringList{"ab\"c", "d"}},
    {u" \"a\"", QStringList{" \"a\""}},
    {u"a,b\"\",c", QStringList{"a", "b\"\"", "c"}},
    // Faults, with the position of the offending character (the end of line is length + 1).
    {u"\"x\"y", std::nullopt,
     "[CSV-0002] Parse error at position 4. Quote followed by illegal character."},
    {u"a,b,\"c\"d", std::nullopt,
     "[CSV-0002] Parse error at position 8. Quote followed by illegal character."},
    {u"\"a\" ,b", std::nullopt,
     "[CSV-0002] Parse error at position 4. Quote followed by illegal character."},
    {u"\"abc", std::nullopt, "[CSV-0001] Parse error at position 5. Found unpaired quote."},
    {u"\"a\"\"", std::nullopt, "[CSV-0001] Parse error at position 5. Found unpaired quote."},
    {u"x,\"a,b", std::nullopt, "[CSV-0001] Parse error at position 7. Found unpaired quote."},
    {u"\"", std::nullopt, "[CSV-0001] Parse error at position 2. Found unpaired quote."},
};

TEST(ParseCsvLine, Table)
{
    for (const ParseCase &c : kParseCases) {
        const QString line = QString::fromUtf16(c.line);
        SCOPED_TRACE(line.toStdString());
        QString error = QStringLiteral("stale");
        const auto fields = ParseCsvLine(line, error);
        EXPECT_EQ(fields, c.fields);
        EXPECT_EQ(error, QString::fromUtf8(c.error));
    }
}

TEST(ParseCsvLine, ClearsErrorOfAnEarlierCall)
{
    QString error;
    ASSERT_FALSE(ParseCsvLine(QStringLiteral("\"abc"), error));
    ASSERT_FALSE(error.isEmpty());
    EXPECT_TRUE(ParseCsvLine(QStringLiteral("\"abc\""), error));
    EXPECT_TRUE(error.isEmpty());
}

TEST(CsvField, Table)
{
    const struct
    {
        QString text;
        QString field;
    } cases[] = {
        {"plain", "plain"},
        {"", ""},
        {"a,b", "\"a,b\""},
        {"say \"hi\"", "\"say \"\"hi\"\"\""},
        {"\"", "\"\"\"\""},
        {"line1\r\nline2", "line1 line2"},
        {"a\r\n,b", "\"a ,b\""},
        {" padded ", " padded "},
        {u"\u20AC 5"_s, u"\u20AC 5"_s},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        EXPECT_EQ(CsvField(c.text), c.field);
    }
}

// Whatever CsvField writes, ParseCsvLine reads back as the one field it was (line breaks aside).
TEST(CsvField, ReadsBackUnchanged)
{
    const QStringList texts
        = {"", "a", "a,b", "\"", "\"\"", ",", "x\"y", " \" ", "\"a\"", "a,\"b\",c", ",,\",,", "  "};
    for (const QString &text : texts) {
        SCOPED_TRACE(text.toStdString());
        QString error;
        const QString line = CsvField(text) + QStringLiteral(",tail");
        const auto fields = ParseCsvLine(line, error);
        ASSERT_TRUE(fields) << error.toStdString();
        EXPECT_EQ(*fields, (QStringList{text, "tail"}));
    }
}

TEST(StripQuotes, Table)
{
    const struct
    {
        QString text;
        QString stripped;
    } cases[] = {
        {"\"a\"", "a"},         {"\"a", "a"}, {"a\"", "a"},           {"\"", ""},
        {"\"\"", ""},           {"a", "a"},   {"\"\"a\"\"", "\"a\""}, {"", ""},
        {" \"a\" ", " \"a\" "},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        EXPECT_EQ(StripQuotes(c.text), c.stripped);
    }
}

} // namespace
