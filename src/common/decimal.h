#pragma once

#include "common/olvexexport.h"

#include <QString>

#include <boost/multiprecision/cpp_dec_float.hpp>

#include <optional>

namespace olvex {

// Decimal arithmetic for setting limits: the absolute limits carry 19 significant digits,
// more than a double holds exactly.
using Decimal = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<32>>;

// Reads "-12.5", "1e3", "1,234.5" (the current locale's separators) or the C locale form.
// Blanks around the number are allowed; anything else gives nullopt.
OLVEX_CORE_EXPORT std::optional<Decimal> parseDecimal(const QString &text);

// Plain text of a decimal with the locale's decimal separator and no exponent, no trailing zeros.
OLVEX_CORE_EXPORT QString decimalText(const Decimal &value);

} // namespace olvex
