#pragma once

// The text rules of the settings CSV file: splitting one line into fields, writing one field so
// that it reads back unchanged, and taking the quotes off a single field.

#include <QString>
#include <QStringList>

#include <optional>

namespace olvex {

// Splits one line (without its line end) into fields. nullopt when the line cannot be parsed;
// errorText then holds the coded message, and is empty otherwise. A line without any double
// quote is split at every comma as it stands; an empty line gives no fields.
std::optional<QStringList> ParseCsvLine(const QString &line, QString &errorText);

// text made safe for one field: inner quotes doubled, CR LF pairs turned into one blank, and
// the whole enclosed in quotes when it holds a comma or a quote.
QString CsvField(const QString &text);

// text without one leading and (independently) one trailing double quote.
QString StripQuotes(const QString &text);

} // namespace olvex
