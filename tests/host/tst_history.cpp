// The audit trail read back: a setting's value changes, newest first, with who and from where,
// through the data interface and through `olvex-settings history`.
#include "testsite.h"

#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/commandqueue.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"

#include <chrono>

using namespace olvex;
using namespace olvex::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

class HistoryTest : public BackendTest
{
};

TEST_P(HistoryTest, ValueChangesNewestFirstWithUserAndClient)
{
    demo();
    HostSession session(u"operator"_s);
    session.clientName = u"OPS-7"_s;
    session.clientAddress = u"10.1.2.7"_s;
    SiteDataInterface di(m_store, session);
    const qint32 span = DemoPids::unit1SO2Span();
    const ParameterPtr parameter = di.GetPidDirectory()->GetPid(span);
    const Value before = parameter->GetCurrentValue().Value;
    CommandQueue queue(*m_store);
    for (const Value &value : {Value(210), Value(220)}) {
        parameter->SetValues(3, value);
        while (const auto write = queue.claimPendingWrite(u"test"_s, 30s)) {
            ASSERT_TRUE(queue.applyPendingWrite(*write, u"test"_s));
        }
    }
    parameter->SetAttribute(SettingAttr::RecommendedHigh, Value(900)); // no value change

    const QList<AuditEntry> values = di.ReadAuditTrail(span, true, 10);
    ASSERT_EQ(values.size(), 2);
    EXPECT_EQ(values[0].newValue.toInteger(), 220);
    EXPECT_EQ(values[0].oldValue.toInteger(), 210);
    EXPECT_EQ(values[1].oldValue.toText(), before.toText());
    EXPECT_GE(values[0].when, values[1].when);
    EXPECT_EQ(values[0].userName, u"operator"_s);
    EXPECT_EQ(values[0].clientName, u"OPS-7"_s);
    EXPECT_EQ(values[0].clientAddress, u"10.1.2.7"_s);
    EXPECT_FALSE(values[0].attribute.has_value());
    EXPECT_EQ(di.ReadAuditTrail(span, false, 10).size(), 3);
    EXPECT_EQ(di.ReadAuditTrail(span, true, 1).size(), 1);

    // The command line prints the same, newest first.
    const ProgramRun run = runProgram(QStringLiteral(OLVEX_SETTINGS_CLI),
                                      {u"history"_s, u"--site"_s, site(), FormatPid(span)});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4) << run.out.toStdString();
    EXPECT_TRUE(lines[2].endsWith(u"\toperator\tOPS-7 (10.1.2.7)\t210\t220"))
        << lines[2].toStdString();
    const ProgramRun bad = runProgram(QStringLiteral(OLVEX_SETTINGS_CLI),
                                      {u"history"_s, u"--site"_s, site(), u"span"_s});
    EXPECT_EQ(bad.exitCode, 2);
}

INSTANTIATE_TEST_SUITE_P(Backends, HistoryTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
