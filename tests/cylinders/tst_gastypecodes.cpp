// The gas type code rules: every complaint in its rule's order, the whole old-token table, and
// the help text as the dialog shows it.
#include "cylinders/gastypecodefunctions.h"

#include <gtest/gtest.h>

using namespace olvex;
using namespace Qt::StringLiterals;

namespace {

TEST(GasTypeCodes, ValidateNamesTheFirstBrokenRule)
{
    const QString none;
    const QList<std::pair<QString, QString>> cases{
        {u"SO2,NO,CO2,BALN"_s, none},
        {u" so2, no ,baln "_s, none},
        {u"AIR"_s, none},
        {u"NOX,N2O,PPN,CH4,HE,H2S,BALA"_s, none},
        {u"XYZ,BALN"_s, u"Code 'XYZ' is not recognized."_s},
        {u"no,xyz,NO"_s, u"Code 'XYZ' is not recognized."_s}, // rule 1 before rule 2
        {u"NO,NO,BALN"_s, u"Code 'NO' is listed twice."_s},
        {u"AIR,AIR"_s, u"Code 'AIR' is listed twice."_s}, // rule 2 before rule 3
        {u"AIR,BALN"_s, u"Code 'AIR' is not allowed in combination with other codes."_s},
        {u"NO,SRM,BALN,BALA"_s, u"Code 'SRM' is not allowed in combination with other codes."_s},
        {u"NO,BALN,BALA"_s, u"Only one balance gas (BALN or BALA) is allowed."_s},
        {u"NO,CO"_s, u"The list needs to include a balance gas (BALN or BALA)."_s},
        {u""_s, u"The list needs to include a balance gas (BALN or BALA)."_s},
        {u"BALN"_s, u"The list needs to include a component gas (NO, NOX, CO, O2, etc.)."_s},
        {u"NO,,BALN"_s, u"Code '' is not recognized."_s},
    };
    for (const auto &[list, expected] : cases) {
        EXPECT_EQ(ValidateGasTypeCodeList(list), expected) << list.toStdString();
    }
}

TEST(GasTypeCodes, ProblemsListEveryComplaintOnce)
{
    EXPECT_EQ(GasTypeCodeListProblems(u"xyz,NO,no,xyz"_s),
              (QStringList{u"Code 'XYZ' is not recognized."_s, u"Code 'NO' is listed twice."_s,
                           u"Code 'XYZ' is listed twice."_s,
                           u"The list needs to include a balance gas (BALN or BALA)."_s}));
    EXPECT_EQ(GasTypeCodeListProblems(u"AIR,BALN,BALA"_s),
              (QStringList{u"Code 'AIR' is not allowed in combination with other codes."_s,
                           u"Only one balance gas (BALN or BALA) is allowed."_s}));
    EXPECT_TRUE(GasTypeCodeListProblems(u"O2,BALN"_s).isEmpty());
}

TEST(GasTypeCodes, ConvertsEveryOldTokenAndLeavesOthers)
{
    // Every old token, then tokens that are not old ones: unchanged, matched exactly.
    // clang-format off
    const QList<std::pair<const char *, const char *>> table{
        {"CO2", "CO2,BALN"}, {"N2C", "CO,NO2,BALN"}, {"N2C2", "CO2,NO2,BALN"},
        {"N2CC", "CO,CO2,NO2,BALN"}, {"NC", "CO,NO,BALN"}, {"NC2", "CO2,NO,BALN"},
        {"NCC", "CO,CO2,NO,BALN"}, {"NO", "NO,BALN"}, {"NO2", "NO2,BALN"}, {"NX", "NO,NO2,BALN"},
        {"NXC", "CO,NO,NO2,BALN"}, {"NXC2", "CO2,NO,NO2,BALN"}, {"NXCC", "CO,CO2,NO,NO2,BALN"},
        {"O2", "O2,BALN"}, {"OC", "CO,O2,BALN"}, {"OC2", "CO2,O2,BALN"}, {"OCC", "CO,CO2,O2,BALN"},
        {"SC", "CO,SO2,BALN"}, {"SC2", "CO2,SO2,BALN"}, {"SN", "NO,SO2,BALN"}, {"SN2", "NO2,SO2,BALN"},
        {"SN2C", "CO,NO2,SO2,BALN"}, {"SN2C2", "CO2,NO2,SO2,BALN"}, {"SN2CC", "CO,CO2,NO2,SO2,BALN"},
        {"SNC", "CO,NO,SO2,BALN"}, {"SNC2", "CO2,NO,SO2,BALN"}, {"SNCC", "CO,CO2,NO,SO2,BALN"},
        {"SNX", "NO,NO2,SO2,BALN"}, {"SNXC", "CO,NO,NO2,SO2,BALN"}, {"SNXC2", "CO2,NO,NO2,SO2,BALN"},
        {"SNXCC", "CO,CO2,NO,NO2,SO2,BALN"}, {"SO", "O2,SO2,BALN"}, {"SO2", "SO2,BALN"},
        {"SOC", "CO,O2,SO2,BALN"}, {"BALN", "BALN"}, {"NOX", "NOX"}, {"snx", "snx"}, {" NX", " NX"},
        {"", ""}, {"A", "A"}, {"ZZZ", "ZZZ"},
    };
    // clang-format on
    for (const auto &[token, list] : table) {
        EXPECT_EQ(ConvertLegacyGasTypeCode(QString::fromLatin1(token)), QString::fromLatin1(list))
            << token;
    }
}

TEST(GasTypeCodes, HelpTextByteForByte)
{
    const QByteArray expected
        = "Gas codes are from this list, separated by commas:\r\n\r\n"
          "BALN -- Balance Gas is Nitrogen\r\nSO2\r\nNO\r\nNO2\r\nCO2\r\nCO\r\nO2\r\n\r\n"
          "=== Less-Common Codes ====\r\n\r\n"
          "BALA -- Balance Gas is Air\r\nNOX -- Total Oxides of Nitrogen\r\n"
          "N2O -- Nitrous Oxide\r\nPPN -- Propane\r\nCH4 -- Methane\r\nHE -- Helium\r\n"
          "H2S -- Hydrogen Sulfide\r\n"
          "APPVD -- Other EPA-approved EPA Protocol gas blend\r\n"
          "AIR -- ONLY for high-level O2 gas; do not use for zero gas\r\n"
          "SRM -- Standard reference material\r\n"
          "NTRM -- NIST-traceable reference material\r\n"
          "GMIS -- Gas manufacturer\xE2\x80\x99s intermediate standard\r\n"
          "RGM -- Research gas mixture\r\n"
          "PRM -- SRM-equivalent compressed gas primary reference material";
    EXPECT_EQ(GetGasTypeCodeHelpText().toUtf8(), expected);
    EXPECT_EQ(GetGasTypeCodeHelpText().split(u"\r\n"_s).size(), 26);
}

} // namespace
