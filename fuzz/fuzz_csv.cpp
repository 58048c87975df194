// ParseCsvLine on any line; CsvField and StripQuotes on any text. Beyond "no crash", checks the
// promises the import relies on:
// - a line without quotes splits into exactly the pieces between its commas;
// - a parsed line has at least one field unless it is empty;
// - whatever CsvField writes (minus line breaks) reads back as that one field.
#include "importexport/csvline.h"
#include "importexport/windows1252.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace olvex;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString line
        = fromWindows1252(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));

    QString error;
    const auto fields = ParseCsvLine(line, error);
    if (fields.has_value() == !error.isEmpty())
        abort(); // an error text exactly when there is no result
    if (fields) {
        if (!line.isEmpty() && fields->isEmpty())
            abort();
        if (!line.contains(u'"') && fields->join(u',') != line)
            abort();
    } else if (!error.startsWith(QLatin1String("[CSV-000"))) {
        abort();
    }

    QString text = line;
    text.remove(u'\r');
    text.remove(u'\n');
    const auto back = ParseCsvLine(CsvField(text), error);
    if (!back || back->size() != 1 || back->constFirst() != text) {
        // An empty text makes an empty line, which has no fields at all.
        if (!(text.isEmpty() && back && back->isEmpty()))
            abort();
    }

    const QString stripped = StripQuotes(line);
    if (stripped.size() < line.size() - 2 || stripped.size() > line.size())
        abort();
    return 0;
}
