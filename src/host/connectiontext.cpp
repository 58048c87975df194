#include "host/connectiontext.h"

#include "common/error.h"
#include "host/storeerrors.h"

#include <QSet>
#include <QUrl>

namespace olvex {

namespace {

[[noreturn]] void refuse(const QString &why)
{
    throw Error(StoreError::BadConnectionText, why);
}

QString percentDecoded(QStringView text)
{
    return QUrl::fromPercentEncoding(text.toUtf8());
}

// The libpq keywords a connection text may carry besides the ones this parser maps itself.
const QSet<QString> &passedKeywords()
{
    static const QSet<QString> keywords{
        QStringLiteral("application_name"),
        QStringLiteral("fallback_application_name"),
        QStringLiteral("connect_timeout"),
        QStringLiteral("options"),
        QStringLiteral("client_encoding"),
        QStringLiteral("sslmode"),
        QStringLiteral("sslcert"),
        QStringLiteral("sslkey"),
        QStringLiteral("sslrootcert"),
        QStringLiteral("sslcrl"),
        QStringLiteral("sslpassword"),
        QStringLiteral("sslcompression"),
        QStringLiteral("gssencmode"),
        QStringLiteral("krbsrvname"),
        QStringLiteral("channel_binding"),
        QStringLiteral("requirepeer"),
        QStringLiteral("passfile"),
        QStringLiteral("service"),
        QStringLiteral("hostaddr"),
        QStringLiteral("target_session_attrs"),
        QStringLiteral("keepalives"),
        QStringLiteral("keepalives_idle"),
        QStringLiteral("keepalives_interval"),
        QStringLiteral("keepalives_count"),
        QStringLiteral("tcp_user_timeout"),
    };
    return keywords;
}

int parsePort(const QString &text, const QString &whole)
{
    bool ok = false;
    const int port = text.toInt(&ok);
    if (!ok || port < 1 || port > 65535) {
        refuse(u"bad port '" + text + u"' in connection text '" + whole + u'\'');
    }
    return port;
}

// One "key='value'" pair of a libpq conninfo string. Qt turns every ";" of the options into a
// blank before handing them to libpq, so a value holding one cannot be passed faithfully.
QString conninfoPair(const QString &key, const QString &value, const QString &whole)
{
    if (value.contains(u';')) {
        refuse(u"the value of '" + key + u"' may not hold ';' in connection text '" + whole
               + u'\'');
    }
    QString quoted = value;
    quoted.replace(u'\\', QStringLiteral("\\\\"));
    quoted.replace(u'\'', QStringLiteral("\\'"));
    return key + u"='" + quoted + u'\'';
}

ConnectionTarget parsePostgres(const QString &text, qsizetype schemeEnd)
{
    ConnectionTarget target;
    target.backend = ConnectionTarget::Backend::Postgres;
    target.text = text;

    QString rest = text.mid(schemeEnd + 3);
    QString query;
    if (const qsizetype q = rest.indexOf(u'?'); q >= 0) {
        query = rest.mid(q + 1);
        rest.truncate(q);
    }
    QString authority = rest;
    if (const qsizetype slash = rest.indexOf(u'/'); slash >= 0) {
        authority = rest.left(slash);
        target.database = percentDecoded(QStringView(rest).mid(slash + 1));
    }
    if (const qsizetype at = authority.lastIndexOf(u'@'); at >= 0) {
        const QString userInfo = authority.left(at);
        authority = authority.mid(at + 1);
        const qsizetype colon = userInfo.indexOf(u':');
        target.user = percentDecoded(QStringView(userInfo).left(colon));
        if (colon >= 0) {
            target.password = percentDecoded(QStringView(userInfo).mid(colon + 1));
        }
    }
    if (authority.contains(u',')) {
        refuse(u"several hosts in one connection text are not supported: '" + text + u'\'');
    }
    if (authority.startsWith(u'[')) {
        const qsizetype close = authority.indexOf(u']');
        if (close < 0) {
            refuse(u"unclosed '[' in the host of connection text '" + text + u'\'');
        }
        target.host = authority.mid(1, close - 1);
        const QString after = authority.mid(close + 1);
        if (after.startsWith(u':')) {
            target.port = parsePort(after.mid(1), text);
        } else if (!after.isEmpty()) {
            refuse(u"unexpected '" + after + u"' after the host of connection text '" + text
                   + u'\'');
        }
    } else {
        const qsizetype colon = authority.lastIndexOf(u':');
        target.host = percentDecoded(QStringView(authority).left(colon));
        if (colon >= 0) {
            target.port = parsePort(authority.mid(colon + 1), text);
        }
    }

    QStringList options;
    bool timeoutGiven = false;
    bool nameGiven = false;
    for (const QString &item : query.split(u'&', Qt::SkipEmptyParts)) {
        const qsizetype eq = item.indexOf(u'=');
        if (eq <= 0) {
            refuse(u"bad parameter '" + item + u"' in connection text '" + text + u'\'');
        }
        const QString key = percentDecoded(QStringView(item).left(eq));
        const QString value = percentDecoded(QStringView(item).mid(eq + 1));
        if (key == u"host") {
            target.host = value;
        } else if (key == u"port") {
            target.port = parsePort(value, text);
        } else if (key == u"user") {
            target.user = value;
        } else if (key == u"password") {
            target.password = value;
        } else if (key == u"dbname") {
            target.database = value;
        } else if (passedKeywords().contains(key)) {
            options.append(conninfoPair(key, value, text));
            timeoutGiven = timeoutGiven || key == u"connect_timeout";
            nameGiven = nameGiven || key == u"application_name";
        } else {
            refuse(u"unknown parameter '" + key + u"' in connection text '" + text + u'\'');
        }
    }
    if (target.host.contains(u',')) {
        refuse(u"several hosts in one connection text are not supported: '" + text + u'\'');
    }
    // An unreachable server should fail in seconds, not after the system's TCP timeout.
    if (!timeoutGiven) {
        options.append(QStringLiteral("connect_timeout='5'"));
    }
    if (!nameGiven) {
        options.append(QStringLiteral("application_name='olvex'"));
    }
    target.connectOptions = options.join(u';');
    return target;
}

} // namespace

QString ConnectionTarget::displayText() const
{
    if (password.isEmpty()) {
        return text;
    }
    QString shown = text;
    shown.replace(QUrl::toPercentEncoding(password), QStringLiteral("***"));
    shown.replace(password, QStringLiteral("***"));
    return shown;
}

ConnectionTarget parseConnectionText(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        refuse(QStringLiteral("no site given: the connection text is empty"));
    }
    const qsizetype schemeEnd = trimmed.indexOf(u"://");
    if (schemeEnd > 0) {
        const QString scheme = trimmed.left(schemeEnd).toLower();
        if (scheme == u"postgresql" || scheme == u"postgres") {
            return parsePostgres(trimmed, schemeEnd);
        }
        if (scheme != u"sqlite") {
            refuse(u"unknown kind of connection text '" + trimmed
                   + u"'; give a file path, sqlite:PATH or a postgresql:// URI");
        }
    }
    ConnectionTarget target;
    target.text = trimmed;
    QString path = trimmed;
    if (path.startsWith(u"sqlite:", Qt::CaseInsensitive)) {
        path = path.mid(7);
        if (path.startsWith(u"//")) {
            path = path.mid(2);
        }
    }
    if (path.isEmpty()) {
        refuse(u"no file in connection text '" + trimmed + u'\'');
    }
    target.filePath = path;
    return target;
}

} // namespace olvex
