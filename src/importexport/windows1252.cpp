#include "importexport/windows1252.h"

#include <algorithm>
#include <array>

namespace olvex {

namespace {

// Unicode of the bytes 0x80 to 0x9F.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, // 80-87
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F, // 88-8F
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, // 90-97
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178, // 98-9F
};

constexpr char kUnmapped = '?';

char encodeOne(char16_t c)
{
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return char(c);
    for (std::size_t i = 0; i < kHighControls.size(); ++i) {
        if (kHighControls[i] == c)
            return char(0x80 + i);
    }
    return kUnmapped;
}

} // namespace

bool fitsWindows1252(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar ch) {
        const char16_t c = ch.unicode();
        return c < 0x80 || encodeOne(c) != kUnmapped;
    });
}

QString fromWindows1252(QByteArrayView bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    char16_t *out = reinterpret_cast<char16_t *>(text.data());
    for (const char b : bytes) {
        const auto u = static_cast<unsigned char>(b);
        *out++ = (u >= 0x80 && u < 0xA0) ? kHighControls[u - 0x80] : char16_t(u);
    }
    return text;
}

void appendWindows1252(QByteArray &out, QStringView text)
{
    const qsizetype start = out.size();
    out.resize(start + text.size());
    char *dst = out.data() + start;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar ch = text[i];
        // A character outside the basic plane is one '?', not one per half of its pair.
        if (ch.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        *dst++ = encodeOne(ch.unicode());
    }
    out.resize(dst - out.data());
}

QByteArray toWindows1252(QStringView text)
{
    QByteArray out;
    appendWindows1252(out, text);
    return out;
}

} // namespace olvex
