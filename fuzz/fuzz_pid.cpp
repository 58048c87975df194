// Fuzzes PID reading and formatting: ParsePid must never crash in either bracket mode, whatever
// it accepts must be a valid PID, and every valid PID must come back unchanged through each of
// its text forms.
#include "common/pid.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

void require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

void checkRoundTrip(qint64 pid)
{
    const QString display = olvex::FormatPid(pid);
    const QString plain = olvex::FormatPidPlain(pid);
    const QString padded = olvex::FormatPidPadded(pid);
    if (!olvex::IsValidPid(pid)) {
        require(display.isEmpty() && plain.isEmpty() && padded.isEmpty());
        return;
    }
    require(olvex::ParsePid(display) == pid);
    require(olvex::ParsePid(plain) == pid);
    require(olvex::ParsePid(padded) == pid);
    require(olvex::ParsePid(u'[' + display + u']', true) == pid);
    require(padded.size() == 10);
    require(plain.size() >= 9 && plain.size() <= 10);
    require(olvex::BuildPid(olvex::GetPidPart(pid, 1), olvex::GetPidPart(pid, 2),
                            olvex::GetPidPart(pid, 5), olvex::GetPidPart(pid, 4),
                            olvex::GetPidPart(pid, 3))
            == pid);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    for (const bool bracketed : {false, true}) {
        const qint32 pid = olvex::ParsePid(text, bracketed);
        require(pid == 0 || olvex::IsValidPid(pid));
        if (pid != 0) {
            checkRoundTrip(pid);
        }
    }
    // The input's first bytes as a number: formatting is total over the 64-bit range.
    if (size >= sizeof(qint64)) {
        qint64 number = 0;
        std::memcpy(&number, data, sizeof number);
        checkRoundTrip(number);
        checkRoundTrip(number % 2000000000);
    }
    return 0;
}
