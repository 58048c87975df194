#include "settings/rtftohtml.h"

#include "common/error.h"

#include <QList>
#include <QStringList>

#include <algorithm>
#include <array>

namespace olvex {

namespace {

// Deeper nesting than any editor writes; a limit keeps hostile text from exhausting memory.
constexpr int kMaxDepth = 256;
constexpr int kMaxControlWord = 32;
constexpr int kMaxParameterDigits = 10;

// Windows-1252 code points of 0x80..0x9F; the five bytes it leaves unassigned read as U+FFFD.
constexpr std::array<char16_t, 32> kCp1252High{
    0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

QChar fromCp1252(int byte)
{
    if (byte >= 0x80 && byte <= 0x9F) {
        return QChar(kCp1252High[size_t(byte - 0x80)]);
    }
    return QChar(char16_t(byte));
}

[[noreturn]] void unreadable(const QString &why)
{
    throw Error(kUnreadableRichText, u"The instructions are not readable rich text: " + why);
}

struct CharFormat
{
    bool bold = false;
    bool italic = false;
    bool underline = false;
    int halfPoints = 0; // 0: the box's own size
    int color = 0;      // index into the colour table; 0 is the automatic colour
    bool operator==(const CharFormat &) const = default;
};

enum class Destination { Text, ColorTable, Skip };

struct GroupState
{
    CharFormat format;
    Destination destination = Destination::Text;
    int fallbackChars = 1; // \uc: characters that follow a \u escape as its fallback
};

// Destinations whose content is not shown text.
bool isSkippedDestination(const QString &word)
{
    static const QStringList skipped{
        QStringLiteral("fonttbl"),    QStringLiteral("filetbl"),
        QStringLiteral("stylesheet"), QStringLiteral("info"),
        QStringLiteral("pict"),       QStringLiteral("object"),
        QStringLiteral("header"),     QStringLiteral("headerl"),
        QStringLiteral("headerr"),    QStringLiteral("headerf"),
        QStringLiteral("footer"),     QStringLiteral("footerl"),
        QStringLiteral("footerr"),    QStringLiteral("footerf"),
        QStringLiteral("footnote"),   QStringLiteral("fldinst"),
        QStringLiteral("listtable"),  QStringLiteral("listoverridetable"),
        QStringLiteral("revtbl"),     QStringLiteral("rsidtbl"),
        QStringLiteral("xmlnstbl"),   QStringLiteral("themedata"),
        QStringLiteral("datastore"),  QStringLiteral("latentstyles"),
        QStringLiteral("generator"),  QStringLiteral("colorschememapping"),
        QStringLiteral("nonshppict"), QStringLiteral("shpinst"),
        QStringLiteral("bkmkstart"),  QStringLiteral("bkmkend"),
        QStringLiteral("pntext"),     QStringLiteral("pntxta"),
        QStringLiteral("pntxtb"),     QStringLiteral("comment"),
        QStringLiteral("author"),     QStringLiteral("title"),
    };
    return skipped.contains(word);
}

QString htmlEscaped(const QString &text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'&':
            out += QStringLiteral("&amp;");
            break;
        case u'<':
            out += QStringLiteral("&lt;");
            break;
        case u'>':
            out += QStringLiteral("&gt;");
            break;
        case u'"':
            out += QStringLiteral("&quot;");
            break;
        default:
            out += c;
        }
    }
    return out;
}

class RtfReader
{
public:
    explicit RtfReader(const QString &text)
        : m_in(text)
    {}

    QString read()
    {
        skipBlanks();
        if (!m_in.mid(m_pos, 5).startsWith(u"{\\rtf")) {
            unreadable(QStringLiteral("it does not begin with {\\rtf"));
        }
        while (m_pos < m_in.size()) {
            const QChar c = m_in.at(m_pos);
            if (c == u'{') {
                ++m_pos;
                openGroup();
            } else if (c == u'}') {
                ++m_pos;
                closeGroup();
                if (m_stack.isEmpty()) {
                    requireNothingAfterTheDocument();
                    break;
                }
            } else if (c == u'\\') {
                ++m_pos;
                readControl();
            } else if (c == u'\r' || c == u'\n') {
                ++m_pos; // line ends of the file are not text
            } else {
                ++m_pos;
                if (m_stack.isEmpty()) {
                    unreadable(QStringLiteral("text outside the document's group"));
                }
                literal(c);
            }
        }
        if (!m_stack.isEmpty()) {
            unreadable(QStringLiteral("a group is not closed"));
        }
        endParagraph(false);
        return u"<html><body>" + m_html + u"</body></html>";
    }

private:
    // Blanks and NULs of a padded field may follow the document; anything else means the text
    // was damaged, and showing part of it could mislead.
    void requireNothingAfterTheDocument()
    {
        for (qsizetype i = m_pos; i < m_in.size(); ++i) {
            if (!m_in.at(i).isSpace() && !m_in.at(i).isNull()) {
                unreadable(u"text follows the end of the document at position "
                           + QString::number(i));
            }
        }
    }

    void skipBlanks()
    {
        while (m_pos < m_in.size() && m_in.at(m_pos).isSpace()) {
            ++m_pos;
        }
    }

    void openGroup()
    {
        if (m_stack.size() >= kMaxDepth) {
            unreadable(QStringLiteral("groups nest too deeply"));
        }
        m_stack.append(m_state);
        m_fallbackLeft = 0;
        m_firstInGroup = true;
    }

    void closeGroup()
    {
        if (m_stack.isEmpty()) {
            unreadable(u"unexpected } at position " + QString::number(m_pos));
        }
        if (m_state.destination == Destination::ColorTable) {
            finishColorTableGroup();
        }
        m_state = m_stack.takeLast();
        m_fallbackLeft = 0;
        m_firstInGroup = false;
    }

    void readControl()
    {
        if (m_pos >= m_in.size()) {
            unreadable(QStringLiteral("the text ends in an escape"));
        }
        const QChar c = m_in.at(m_pos);
        if (isAsciiLetter(c)) {
            readControlWord();
            return;
        }
        ++m_pos;
        const bool firstInGroup = m_firstInGroup;
        m_firstInGroup = false;
        if (c == u'\'') {
            const int byte = readHexByte();
            if (!consumeFallback()) {
                character(fromCp1252(byte));
            }
            return;
        }
        if (consumeFallback()) {
            return;
        }
        switch (c.unicode()) {
        case u'\\':
        case u'{':
        case u'}':
            character(c);
            break;
        case u'~':
            character(QChar(0x00A0));
            break;
        case u'_':
            character(QChar(0x2011));
            break;
        case u'\r':
        case u'\n':
            paragraph();
            break;
        case u'*':
            // An ignorable destination: nothing of it is shown here.
            if (firstInGroup) {
                m_state.destination = Destination::Skip;
            }
            break;
        default:
            break; // \- optional hyphen, \| \: and the like show nothing
        }
    }

    static bool isAsciiLetter(QChar c)
    {
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
    }

    int readHexByte()
    {
        int byte = 0;
        for (int i = 0; i < 2; ++i) {
            if (m_pos >= m_in.size()) {
                unreadable(QStringLiteral("a \\' escape is cut short"));
            }
            const int digit = QStringView(m_in).mid(m_pos, 1).toInt(nullptr, 16);
            const QChar c = m_in.at(m_pos);
            if (!c.isDigit() && !(c >= u'a' && c <= u'f') && !(c >= u'A' && c <= u'F')) {
                unreadable(u"a \\' escape holds no hex digits at position "
                           + QString::number(m_pos));
            }
            byte = byte * 16 + digit;
            ++m_pos;
        }
        return byte;
    }

    void readControlWord()
    {
        const qsizetype start = m_pos;
        while (m_pos < m_in.size() && isAsciiLetter(m_in.at(m_pos))) {
            ++m_pos;
        }
        if (m_pos - start > kMaxControlWord) {
            unreadable(u"a control word is too long at position " + QString::number(start));
        }
        const QString word = m_in.mid(start, m_pos - start);
        bool hasParameter = false;
        bool negative = false;
        qint64 parameter = 0;
        if (m_pos < m_in.size() && m_in.at(m_pos) == u'-') {
            negative = true;
            ++m_pos;
        }
        const qsizetype digitsStart = m_pos;
        while (m_pos < m_in.size() && m_in.at(m_pos).isDigit() && m_in.at(m_pos).unicode() < 128) {
            parameter = parameter * 10 + (m_in.at(m_pos).unicode() - u'0');
            ++m_pos;
            if (m_pos - digitsStart > kMaxParameterDigits) {
                unreadable(u"a number is too long at position " + QString::number(digitsStart));
            }
        }
        hasParameter = m_pos > digitsStart;
        if (negative && !hasParameter) {
            unreadable(u"a sign without a number at position " + QString::number(digitsStart));
        }
        if (negative) {
            parameter = -parameter;
        }
        if (m_pos < m_in.size() && m_in.at(m_pos) == u' ') {
            ++m_pos; // the delimiting blank belongs to the control word
        }
        const bool firstInGroup = m_firstInGroup;
        m_firstInGroup = false;
        if (word == u"u") {
            unicodeEscape(parameter);
            return;
        }
        if (consumeFallback()) {
            return;
        }
        controlWord(word, hasParameter, int(std::clamp<qint64>(parameter, -1000000, 1000000)),
                    firstInGroup);
    }

    void unicodeEscape(qint64 parameter)
    {
        if (consumeFallback()) {
            return;
        }
        // \u takes a signed 16-bit number: negative values stand for code units above 32767.
        const qint64 unit = parameter < 0 ? parameter + 65536 : parameter;
        character(QChar(char16_t(std::clamp<qint64>(unit, 0, 0xFFFF))));
        m_fallbackLeft = m_state.fallbackChars;
    }

    // True (and one fewer left) while the fallback characters of a \u escape are passed over.
    bool consumeFallback()
    {
        if (m_fallbackLeft <= 0) {
            return false;
        }
        --m_fallbackLeft;
        return true;
    }

    void controlWord(const QString &word, bool hasParameter, int parameter, bool firstInGroup)
    {
        const bool on = !hasParameter || parameter != 0;
        if (firstInGroup && word == u"colortbl") {
            m_state.destination = Destination::ColorTable;
            m_colors.clear();
            startColor();
            return;
        }
        if (isSkippedDestination(word)) {
            m_state.destination = Destination::Skip;
            return;
        }
        if (m_state.destination == Destination::ColorTable) {
            if (word == u"red") {
                m_red = qBound(0, parameter, 255);
            } else if (word == u"green") {
                m_green = qBound(0, parameter, 255);
            } else if (word == u"blue") {
                m_blue = qBound(0, parameter, 255);
            } else {
                return;
            }
            m_colorSet = true;
            return;
        }
        if (word == u"b") {
            m_state.format.bold = on;
        } else if (word == u"i") {
            m_state.format.italic = on;
        } else if (word == u"ul" || word == u"uld" || word == u"uldb" || word == u"ulw"
                   || word == u"uldash" || word == u"ulth" || word == u"ulwave") {
            m_state.format.underline = on;
        } else if (word == u"ulnone") {
            m_state.format.underline = false;
        } else if (word == u"fs") {
            m_state.format.halfPoints = hasParameter ? qBound(0, parameter, 3200) : 24;
        } else if (word == u"cf") {
            m_state.format.color = qMax(0, parameter);
        } else if (word == u"plain") {
            m_state.format = CharFormat{};
        } else if (word == u"uc") {
            m_state.fallbackChars = qBound(0, parameter, 16);
        } else if (word == u"par" || word == u"sect" || word == u"page" || word == u"row") {
            paragraph();
        } else if (word == u"line") {
            character(QChar(0x2028));
        } else if (word == u"pard") {
            m_alignment.clear();
        } else if (word == u"qc") {
            m_alignment = QStringLiteral("center");
        } else if (word == u"qr") {
            m_alignment = QStringLiteral("right");
        } else if (word == u"qj") {
            m_alignment = QStringLiteral("justify");
        } else if (word == u"ql") {
            m_alignment.clear();
        } else if (word == u"tab" || word == u"cell") {
            character(u'\t');
        } else if (word == u"emdash") {
            character(QChar(0x2014));
        } else if (word == u"endash") {
            character(QChar(0x2013));
        } else if (word == u"bullet") {
            character(QChar(0x2022));
        } else if (word == u"lquote") {
            character(QChar(0x2018));
        } else if (word == u"rquote") {
            character(QChar(0x2019));
        } else if (word == u"ldblquote") {
            character(QChar(0x201C));
        } else if (word == u"rdblquote") {
            character(QChar(0x201D));
        } else if (word == u"emspace" || word == u"enspace") {
            character(u' ');
        }
        // Every other control word (document, font, page settings) changes nothing shown.
    }

    void startColor()
    {
        m_red = m_green = m_blue = 0;
        m_colorSet = false;
    }

    void endColor()
    {
        if (m_colors.size() < 4096) {
            m_colors.append(m_colorSet ? QStringLiteral("#%1%2%3")
                                             .arg(m_red, 2, 16, QLatin1Char('0'))
                                             .arg(m_green, 2, 16, QLatin1Char('0'))
                                             .arg(m_blue, 2, 16, QLatin1Char('0'))
                                       : QString());
        }
        startColor();
    }

    void finishColorTableGroup()
    {
        if (m_colorSet) {
            endColor();
        }
    }

    // A character of the text itself: passed over while it is the fallback of a \u escape.
    void literal(QChar c)
    {
        m_firstInGroup = false;
        if (!consumeFallback()) {
            character(c);
        }
    }

    void character(QChar c)
    {
        switch (m_state.destination) {
        case Destination::Skip:
            return;
        case Destination::ColorTable:
            if (c == u';') {
                endColor();
            }
            return;
        case Destination::Text:
            break;
        }
        if (!(m_runFormat == m_state.format)) {
            closeRun();
            m_runFormat = m_state.format;
        }
        m_run += c;
    }

    void closeRun()
    {
        if (m_run.isEmpty()) {
            return;
        }
        QStringList style;
        if (m_runFormat.bold) {
            style << QStringLiteral("font-weight:bold");
        }
        if (m_runFormat.italic) {
            style << QStringLiteral("font-style:italic");
        }
        if (m_runFormat.underline) {
            style << QStringLiteral("text-decoration:underline");
        }
        if (m_runFormat.halfPoints > 0) {
            style << QStringLiteral("font-size:%1pt").arg(double(m_runFormat.halfPoints) / 2.0);
        }
        if (m_runFormat.color > 0 && m_runFormat.color < m_colors.size()
            && !m_colors.at(m_runFormat.color).isEmpty()) {
            style << u"color:" + m_colors.at(m_runFormat.color);
        }
        QString escaped = htmlEscaped(m_run);
        escaped.replace(QChar(0x2028), QStringLiteral("<br />"));
        if (style.isEmpty()) {
            m_paragraph += escaped;
        } else {
            m_paragraph += u"<span style=\"" + style.join(u"; ") + u"\">" + escaped + u"</span>";
        }
        m_run.clear();
    }

    void paragraph()
    {
        if (m_state.destination == Destination::Text) {
            endParagraph(true);
        }
    }

    // keepEmpty: a \par always makes a paragraph; the end of the text only when it holds text.
    void endParagraph(bool keepEmpty)
    {
        closeRun();
        if (m_paragraph.isEmpty() && !keepEmpty) {
            return;
        }
        QString attributes = QStringLiteral(" style=\"margin-top:0; margin-bottom:0; "
                                            "white-space:pre-wrap");
        if (m_paragraph.isEmpty()) {
            attributes += QStringLiteral("; -qt-paragraph-type:empty");
        }
        attributes += u'"';
        if (!m_alignment.isEmpty()) {
            attributes += u" align=\"" + m_alignment + u'"';
        }
        m_html += u"<p" + attributes + u'>'
                  + (m_paragraph.isEmpty() ? QStringLiteral("<br />") : m_paragraph) + u"</p>";
        m_paragraph.clear();
    }

    const QString &m_in;
    qsizetype m_pos = 0;
    QList<GroupState> m_stack;
    GroupState m_state;
    bool m_firstInGroup = false;
    int m_fallbackLeft = 0;

    QStringList m_colors;
    int m_red = 0;
    int m_green = 0;
    int m_blue = 0;
    bool m_colorSet = false;

    CharFormat m_runFormat;
    QString m_run;
    QString m_paragraph;
    QString m_alignment;
    QString m_html;
};

} // namespace

QString rtfToHtml(const QString &rtf)
{
    return RtfReader(rtf).read();
}

bool looksLikeRtf(const QString &text)
{
    return text.startsWith(u"{\\rtf1");
}

} // namespace olvex
