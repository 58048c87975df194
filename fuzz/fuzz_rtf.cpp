// Instruction texts come from the site store and may hold anything: the rich-text reader must
// either give HTML or throw olvex::Error, never crash, hang or throw anything else.
#include "common/error.h"
#include "settings/rtftohtml.h"

#include <QString>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Half the inputs start as rich text so the fuzzer reaches past the first check quickly.
    QString text = QString::fromLatin1(reinterpret_cast<const char *>(data), qsizetype(size));
    if (size > 0 && (data[0] & 1) != 0) {
        text = u"{\\rtf1 " + text.mid(1);
    }
    try {
        const QString html = olvex::rtfToHtml(text);
        if (html.isEmpty()) {
            __builtin_trap();
        }
    } catch (const olvex::Error &) {
        // Unreadable text is an expected answer.
    }
    return 0;
}
