#pragma once

#include "common/olvexexport.h"

#include <QString>

namespace olvex {

// The error number of rich text that cannot be read (thrown as olvex::Error).
inline constexpr int kUnreadableRichText = 32000;

// Turns the rich text of setting instructions into HTML for a rich-text box. What instruction
// texts use is kept: paragraphs and line breaks, bold, italic, underline, font size, colours of
// the colour table, alignment, \'hh escapes (read as Windows-1252) and \u escapes with their
// fallback skip count. Font tables, style sheets, pictures and every other destination are
// skipped.
//
// Throws olvex::Error(kUnreadableRichText, ...) when the text does not start with "{\rtf",
// when its braces do not balance, when groups nest deeper than any editor writes, or when an
// escape is malformed. Runs in time linear in the text, so hostile input costs nothing more.
OLVEX_CORE_EXPORT QString rtfToHtml(const QString &rtf);

// True when an instructions text is to be read as rich text.
OLVEX_CORE_EXPORT bool looksLikeRtf(const QString &text);

} // namespace olvex
