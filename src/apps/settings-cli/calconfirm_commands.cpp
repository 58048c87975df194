// What the confirmation side of the calibrations shows on the command line: the raised system
// messages and the calibrations that wait for the operator.
#include "calconfirm_commands.h"
#include "cliutil.h"

#include "calconfirm/calconfirmfunctions.h"
#include "common/error.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/siteservices.h"
#include "host/sitestore.h"
#include "host/systemmessages.h"

namespace olvex::cli {

namespace {

QString pidColumn(qint32 pid)
{
    return pid == 0 ? QStringLiteral("-") : FormatPid(pid);
}

} // namespace

int messagesCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    const QCommandLineOption last(QStringLiteral("last"),
                                  QStringLiteral("Shows the newest N messages (default 50)."),
                                  QStringLiteral("N"), QStringLiteral("50"));
    parser.addOption(last);
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Prints the raised system messages, oldest "
                                                  "first: time, type, PID, user@client, text."),
                                   QString(), 0, 0, out, err)) {
        return *done;
    }
    bool ok = false;
    const int limit = parser.value(last).toInt(&ok);
    if (!ok || limit < 1) {
        return complain(
            err, u"messages: --last wants a positive number, not '" + parser.value(last) + u'\'',
            ExitCode::Usage);
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        const QList<SystemMessage> messages = readSystemMessages(*store, limit);
        if (messages.isEmpty()) {
            out << "no system messages\n";
        }
        for (const SystemMessage &m : messages) {
            out << m.raised.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) << "  0x"
                << QString::number(m.msgType, 16).toUpper() << "  " << pidColumn(m.pid) << "  "
                << m.userName << '@' << m.clientAddress << "  " << m.text << '\n';
        }
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, u"messages: " + currentError().description, ExitCode::Failed);
    }
}

int calPendingCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    // args[0] is "cal", args[1] "pending".
    if (auto done = parseArguments(parser, args.mid(1),
                                   QStringLiteral("Prints the calibrations that wait for the "
                                                  "operator's confirmation, as the "
                                                  "confirmation panel reads them."),
                                   QString(), 0, 0, out, err)) {
        return *done;
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        SiteCurrentDataReader reader(store);
        int pending = 0;
        for (const ParameterRecord &cal : store->parametersOfTypes({ParameterTypes::Calibration})) {
            const Value *supports = cal.attribute(CalibrationAttr::SupportsConfirmation);
            if (!supports || !supports->isTrue()) {
                continue;
            }
            const XmlDocument document = GetCalConfirmDocument(nullptr, reader, cal.pid);
            if (!document || !IsCalConfirmPending(document)) {
                continue;
            }
            const PendingCalTexts texts = ReadPendingCalTexts(document);
            QString action = texts.defaultAction;
            action.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
            out << FormatPid(cal.pid) << "  " << cal.name << '\n'
                << "    Reason For Calibration: " << texts.reason << '\n'
                << "    Scheduled Start Time:   " << texts.startTime << '\n'
                << "    " << action << '\n';
            ++pending;
        }
        if (pending == 0) {
            out << "There are no calibrations pending confirmation\n";
        }
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, u"cal pending: " + currentError().description, ExitCode::Failed);
    }
}

} // namespace olvex::cli
