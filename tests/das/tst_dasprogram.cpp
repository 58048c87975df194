// The olvex-das command line: what it refuses, the one clear line it gives when it cannot start,
// and a drain as the operator sees it through olvex-settings.
#include "dastestsite.h"
#include "host/testsite.h"

#include "common/pid.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QTemporaryDir>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;
using testing::HasSubstr;

namespace {

// A bad command line gets its reason and the usage hint (code 2); a site that cannot be opened
// gets one line (code 1).
TEST(DasProgram, RefusesWhatItCannotRunWithItsCode)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString notASite = dir.filePath(u"notes.txt"_s);
    QFile file(notASite);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("not a database\n") > 0);
    file.close();
    const QString site = u"/nonexistent/site.db"_s;
    const QString drain = u"--drain"_s;
    // arguments, message (empty: the site cannot be opened).
    const std::tuple<QStringList, std::string> cases[] = {
        {QStringList(), "no site given (--site SITE)"},
        {{u"--site"_s}, "Missing value after '--site'"},
        {{u"--site"_s, site, u"--interval"_s, u"1s"_s},
         "--interval wants a positive number of milliseconds, not '1s'"},
        {{u"--site"_s, site, u"--lease"_s, u"-5"_s},
         "--lease wants a positive number of milliseconds, not '-5'"},
        {{u"--site"_s, site, u"--bogus"_s}, "Unknown option 'bogus'"},
        {{u"--site"_s, site, u"extra"_s}, "unexpected argument 'extra'"},
        {{u"--site"_s, dir.filePath(u"missing.db"_s), drain}, ""},
        {{u"--site"_s, notASite, drain}, ""},
    };
    for (const auto &[arguments, message] : cases) {
        SCOPED_TRACE(arguments.join(u' ').toStdString());
        const ProgramRun run = runProgram(dasProgram(), arguments);
        const std::string err = run.err.toStdString();
        if (message.empty()) {
            EXPECT_EQ(run.exitCode, 1);
            EXPECT_TRUE(run.err.startsWith(u"olvex-das: ")) << err;
            EXPECT_EQ(run.err.count(u'\n'), 1) << err;
        } else {
            EXPECT_EQ(run.exitCode, 2);
            EXPECT_THAT(err, HasSubstr("olvex-das: " + message));
            EXPECT_THAT(err, HasSubstr("Try 'olvex-das --help'."));
        }
    }
}

// A changed setting reads "Updating..." until the service has run, then the new value; a drain
// applies everything pending, says so, and exits.
TEST(DasProgram, DrainAppliesWhatIsPendingAndExits)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString site = dir.filePath(u"site.db"_s);
    QList<qint32> pids;
    auto store = createServiceSite(site, 2, pids);
    queueWrites(*store, {{pids.at(0), Value(11)}, {pids.at(1), Value(22)}});
    const QString pid = FormatPid(pids.at(0));
    const QString cli = QStringLiteral(OLVEX_SETTINGS_CLI);
    const auto get = [&] {
        return runProgram(cli, {u"get"_s, u"--site"_s, site, u"--user"_s, kOperator.userName, pid})
            .out.trimmed();
    };
    const ProgramRun set = runProgram(
        cli, {u"set"_s, u"--site"_s, site, u"--user"_s, kOperator.userName, pid, u"33"_s});
    ASSERT_EQ(set.exitCode, 0) << set.err.toStdString();
    EXPECT_EQ(get(), pid + u"\tUpdating...");

    const QStringList drain = {u"--site"_s, site, u"--drain"_s};
    const ProgramRun run = runProgram(dasProgram(), drain);
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.err.count(u" applied"_s), 3);
    EXPECT_THAT(
        run.err.toStdString(),
        testing::MatchesRegex("(.|\n)*drained the queue: 3 items carried out \\(3 done, 0 failed\\)"
                              " in [0-9.]+ s, [0-9]+ items a second\n"));
    EXPECT_EQ(get(), pid + u"\t33");
    EXPECT_EQ(store->liveState(pids.at(1)).current.Value, Value(22));

    // Nothing to do: a drain comes back at once.
    const ProgramRun again = runProgram(dasProgram(), drain);
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.err.count(u" applied"_s), 0);
}

} // namespace
