#include "common/pid.h"

#include <cmath>

namespace olvex {

namespace {

constexpr qint64 kMinPid = 100000;
constexpr qint64 kPidLimit = 2000000000;

int groupC(qint64 pid)
{
    return int((pid % 100000) / 10000);
}

// Reads one digit group leftwards from end (exclusive) of text, moving end past what it used.
// Returns -1 when the group found no digit.
int readGroup(QStringView text, qsizetype &end, int maxDigits)
{
    int value = 0;
    int digits = 0;
    int place = 1;
    while (end > 0 && digits < maxDigits) {
        const char16_t last = text[end - 1].unicode();
        if (last >= u'0' && last <= u'9') {
            value += (last - u'0') * place;
            place *= 10;
            ++digits;
            --end;
        } else if (digits > 0) {
            break; // a separator ends a group that has digits
        } else {
            --end; // separators before a group's digits are skipped
        }
    }
    return digits > 0 ? value : -1;
}

} // namespace

bool IsValidPid(qint64 value)
{
    if (value < kMinPid || value >= kPidLimit) {
        return false;
    }
    const int c = groupC(value);
    return c != 6 && c != 9;
}

bool IsValidPid(const Value &value)
{
    switch (value.kind()) {
    case Value::Kind::Integer:
    case Value::Kind::Double:
        if (const auto whole = value.toInteger()) {
            return IsValidPid(*whole);
        }
        return false;
    case Value::Kind::Text:
        return ParsePid(value.toText()) != 0;
    default:
        return false;
    }
}

qsizetype formatPidInto(qint64 pid, char16_t *text)
{
    if (!IsValidPid(pid)) {
        return 0;
    }
    // Written digit by digit: an export formats one PID per setting, and five arg() calls
    // cost more than the rest of its line.
    qsizetype n = 0;
    const auto digit = [](qint64 d) {
        return char16_t(u'0' + d);
    };
    const qint64 a = pid / 100000000;
    if (a >= 10)
        text[n++] = digit(a / 10);
    text[n++] = digit(a % 10);
    text[n++] = u'-';
    const qint64 b = (pid % 100000000) / 100000;
    text[n++] = digit(b / 100);
    text[n++] = digit(b / 10 % 10);
    text[n++] = digit(b % 10);
    text[n++] = u'-';
    text[n++] = digit(groupC(pid));
    text[n++] = u'-';
    text[n++] = digit(pid % 10000 / 1000);
    text[n++] = digit(pid % 1000 / 100);
    text[n++] = u'-';
    text[n++] = digit(pid % 100 / 10);
    text[n++] = digit(pid % 10);
    return n;
}

QString FormatPid(qint64 pid)
{
    char16_t text[kFormattedPidSize];
    const qsizetype n = formatPidInto(pid, text);
    return n == 0 ? QString() : QString(reinterpret_cast<const QChar *>(text), n);
}

QString FormatPidPlain(qint64 pid)
{
    return IsValidPid(pid) ? QStringLiteral("%1").arg(pid, 9, 10, QLatin1Char('0')) : QString();
}

QString FormatPidPadded(qint64 pid)
{
    return IsValidPid(pid) ? QStringLiteral("%1").arg(pid, 10, 10, QLatin1Char('0')) : QString();
}

int GetPidPart(qint64 pid, int part)
{
    switch (part) {
    case 1:
        return int(pid / 100000000);
    case 2:
        return int((pid % 100000000) / 100000);
    case 3:
        return int(pid % 100);
    case 4:
        return int((pid % 10000) / 100);
    case 5:
        return groupC(pid);
    case -5: {
        const int c = groupC(pid);
        return c == 7 ? 8 : c;
    }
    default:
        return 0;
    }
}

qint32 ParsePid(QStringView text, bool bracketed)
{
    if (bracketed) {
        text = text.trimmed();
        if (!text.startsWith(u'[')) {
            return 0;
        }
        text = text.mid(1);
        // Left trim only: what follows the bracket may not start with "@" (a reference form).
        while (!text.isEmpty() && text.front().isSpace()) {
            text = text.mid(1);
        }
        const qsizetype close = text.indexOf(u']');
        if (text.startsWith(u'@') || close < 0) {
            return 0;
        }
        text = text.left(close);
    }

    qsizetype end = text.size();
    const int e = readGroup(text, end, 2);
    const int d = readGroup(text, end, 2);
    const int c = readGroup(text, end, 1);
    const int b = readGroup(text, end, 3);
    if (e < 0 || d < 0 || c < 0 || b < 0) {
        return 0;
    }
    int a = 0;
    if (end > 0) {
        a = readGroup(text, end, 2);
        if (a < 0) {
            return 0;
        }
    }
    return BuildPid(a, b, c, d, e);
}

qint32 BuildPid(int a, int b, int c, int d, int e)
{
    if (a < 0 || a > 19 || b < 0 || b > 999 || c < 0 || c > 9 || d < 0 || d > 99 || e < 0
        || e > 99) {
        return 0;
    }
    const qint64 pid = qint64(a) * 100000000 + qint64(b) * 100000 + c * 10000 + d * 100 + e;
    return IsValidPid(pid) ? qint32(pid) : 0;
}

} // namespace olvex
