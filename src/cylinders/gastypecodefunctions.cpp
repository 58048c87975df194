#include "cylinders/gastypecodefunctions.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <iterator>

namespace olvex {

namespace {

constexpr std::array kComponentGases{u"SO2", u"NO",  u"NO2", u"NOX", u"CO2", u"CO",
                                     u"O2",  u"N2O", u"PPN", u"CH4", u"HE",  u"H2S"};
constexpr std::array kBalanceGases{u"BALN", u"BALA"};
// Blends and reference materials: each names the whole content of its cylinder.
constexpr std::array kStandAlone{u"APPVD", u"AIR", u"SRM", u"NTRM", u"GMIS", u"RGM", u"PRM"};

template<std::size_t N>
bool isOneOf(const std::array<const char16_t *, N> &codes, const QString &code)
{
    return std::ranges::any_of(codes, [&code](const char16_t *c) { return code == c; });
}

struct LegacyCode
{
    const char16_t *token;
    const char16_t *list;
};

// Sorted by token: looked up by binary search. "X" is NO and NO2 together, never NOX.
constexpr std::array<LegacyCode, 34> kLegacyCodes{{
    {u"CO2", u"CO2,BALN"},
    {u"N2C", u"CO,NO2,BALN"},
    {u"N2C2", u"CO2,NO2,BALN"},
    {u"N2CC", u"CO,CO2,NO2,BALN"},
    {u"NC", u"CO,NO,BALN"},
    {u"NC2", u"CO2,NO,BALN"},
    {u"NCC", u"CO,CO2,NO,BALN"},
    {u"NO", u"NO,BALN"},
    {u"NO2", u"NO2,BALN"},
    {u"NX", u"NO,NO2,BALN"},
    {u"NXC", u"CO,NO,NO2,BALN"},
    {u"NXC2", u"CO2,NO,NO2,BALN"},
    {u"NXCC", u"CO,CO2,NO,NO2,BALN"},
    {u"O2", u"O2,BALN"},
    {u"OC", u"CO,O2,BALN"},
    {u"OC2", u"CO2,O2,BALN"},
    {u"OCC", u"CO,CO2,O2,BALN"},
    {u"SC", u"CO,SO2,BALN"},
    {u"SC2", u"CO2,SO2,BALN"},
    {u"SN", u"NO,SO2,BALN"},
    {u"SN2", u"NO2,SO2,BALN"},
    {u"SN2C", u"CO,NO2,SO2,BALN"},
    {u"SN2C2", u"CO2,NO2,SO2,BALN"},
    {u"SN2CC", u"CO,CO2,NO2,SO2,BALN"},
    {u"SNC", u"CO,NO,SO2,BALN"},
    {u"SNC2", u"CO2,NO,SO2,BALN"},
    {u"SNCC", u"CO,CO2,NO,SO2,BALN"},
    {u"SNX", u"NO,NO2,SO2,BALN"},
    {u"SNXC", u"CO,NO,NO2,SO2,BALN"},
    {u"SNXC2", u"CO2,NO,NO2,SO2,BALN"},
    {u"SNXCC", u"CO,CO2,NO,NO2,SO2,BALN"},
    {u"SO", u"O2,SO2,BALN"},
    {u"SO2", u"SO2,BALN"},
    {u"SOC", u"CO,O2,SO2,BALN"},
}};

} // namespace

QString GetGasTypeCodeHelpText()
{
    static const QString text = QStringList{
        QStringLiteral("Gas codes are from this list, separated by commas:"),
        QString(),
        QStringLiteral("BALN -- Balance Gas is Nitrogen"),
        QStringLiteral("SO2"),
        QStringLiteral("NO"),
        QStringLiteral("NO2"),
        QStringLiteral("CO2"),
        QStringLiteral("CO"),
        QStringLiteral("O2"),
        QString(),
        QStringLiteral("=== Less-Common Codes ===="),
        QString(),
        QStringLiteral("BALA -- Balance Gas is Air"),
        QStringLiteral("NOX -- Total Oxides of Nitrogen"),
        QStringLiteral("N2O -- Nitrous Oxide"),
        QStringLiteral("PPN -- Propane"),
        QStringLiteral("CH4 -- Methane"),
        QStringLiteral("HE -- Helium"),
        QStringLiteral("H2S -- Hydrogen Sulfide"),
        QStringLiteral("APPVD -- Other EPA-approved EPA Protocol gas blend"),
        QStringLiteral("AIR -- ONLY for high-level O2 gas; do not use for zero gas"),
        QStringLiteral("SRM -- Standard reference material"),
        QStringLiteral("NTRM -- NIST-traceable reference material"),
        QString::fromUtf16(u"GMIS -- Gas manufacturer\u2019s intermediate standard"),
        QStringLiteral("RGM -- Research gas mixture"),
        QStringLiteral("PRM -- SRM-equivalent compressed gas primary reference material"),
    }.join(QStringLiteral("\r\n"));
    return text;
}

QStringList GasTypeCodeListProblems(const QString &list)
{
    QStringList codes = list.split(u',');
    for (QString &code : codes) {
        code = code.trimmed().toUpper();
    }
    // An empty list (or one of blanks) has no code to name: it fails for its missing balance gas.
    if (codes.size() == 1 && codes.first().isEmpty()) {
        codes.clear();
    }
    QStringList problems;
    const auto complainOnce = [&problems](const QString &problem) {
        if (!problems.contains(problem)) {
            problems.append(problem);
        }
    };
    for (const QString &code : std::as_const(codes)) {
        if (!isOneOf(kComponentGases, code) && !isOneOf(kBalanceGases, code)
            && !isOneOf(kStandAlone, code)) {
            complainOnce(u"Code '" + code + u"' is not recognized.");
        }
    }
    for (qsizetype i = 0; i < codes.size(); ++i) {
        if (codes.indexOf(codes[i]) < i) {
            complainOnce(u"Code '" + codes[i] + u"' is listed twice.");
        }
    }
    for (const QString &code : std::as_const(codes)) {
        if (isOneOf(kStandAlone, code) && codes.size() > 1) {
            complainOnce(u"Code '" + code + u"' is not allowed in combination with other codes.");
        }
    }
    const auto count = [&codes](const auto &kind) {
        return std::ranges::count_if(codes, [&kind](const QString &c) { return isOneOf(kind, c); });
    };
    const auto balanceGases = count(kBalanceGases);
    if (balanceGases > 1) {
        problems.append(QStringLiteral("Only one balance gas (BALN or BALA) is allowed."));
    }
    // A blend or reference material names the whole content: the gas rules do not apply.
    if (count(kStandAlone) > 0) {
        return problems;
    }
    if (balanceGases == 0) {
        problems.append(QStringLiteral("The list needs to include a balance gas (BALN or BALA)."));
    }
    if (count(kComponentGases) == 0) {
        problems.append(
            QStringLiteral("The list needs to include a component gas (NO, NOX, CO, O2, etc.)."));
    }
    return problems;
}

QString ValidateGasTypeCodeList(const QString &list)
{
    return GasTypeCodeListProblems(list).value(0);
}

QString ConvertLegacyGasTypeCode(const QString &token)
{
    const auto it
        = std::ranges::lower_bound(kLegacyCodes, QStringView(token), std::ranges::less(),
                                   [](const LegacyCode &c) { return QStringView(c.token); });
    if (it != kLegacyCodes.end() && QStringView(it->token) == token) {
        return QString::fromUtf16(it->list);
    }
    return token;
}

} // namespace olvex
