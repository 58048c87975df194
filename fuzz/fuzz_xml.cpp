// Fuzzes the XML loaders and node readers with arbitrary text, as parameter values may hold it:
// loading must never crash, leak or throw, and a failed load must be logged.
#include "common/host.h"
#include "common/xml.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

class CountingLog : public olvex::MessageLog
{
public:
    void LogMessage(int severity, const QString &text) override
    {
        if (severity != olvex::Severity::Error || !text.startsWith(u"XMLDOM-")) {
            std::abort();
        }
        ++lines;
    }
    int lines = 0;
};

const char16_t *const kPaths[] = {
    u"//CalStart/CalEnabled",
    u"//CalStart/ManualCalStartSupported/@ioid",
    u"//CalStart/CalConfirmExpirationTime",
    u"/*",
    u"//*[2]",
    u"//@*",
    u"//text()",
    u"*",
};

void readAll(const olvex::XmlDocument &doc)
{
    for (const char16_t *path : kPaths) {
        const QString p = QString::fromUtf16(path);
        (void)olvex::GetNodeText(doc, p);
        (void)olvex::GetNodeBool(doc, p);
    }
    // Date reading tries the locale's formats and is slow on garbage; one path is enough.
    (void)olvex::GetNodeDate(doc, QString::fromUtf16(kPaths[2]));
    for (const olvex::XmlNode &node : doc.selectNodes(QStringLiteral("//*"))) {
        (void)olvex::GetNodeText(node, QStringLiteral("@*"));
        (void)node.attribute(QStringLiteral("ioid"));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    try {
        CountingLog log;
        const olvex::XmlDocument doc = olvex::LoadXmlDocument(&log, text);
        if (doc.isNull() != (log.lines == 1)) {
            std::abort();
        }
        readAll(doc);

        CountingLog fragmentLog;
        const olvex::XmlDocument fragment = olvex::LoadXmlFragment(&fragmentLog, text);
        if (fragment.isNull() != (fragmentLog.lines == 2)) {
            std::abort();
        }
        readAll(fragment);
        if (text.size() < 64) {
            (void)olvex::ParseXmlDate(text);
        }
    } catch (...) {
        std::abort(); // the helpers promise never to throw
    }
    return 0;
}
