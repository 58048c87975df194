#pragma once

#include "common/olvexexport.h"

#include <QString>

#include <exception>
#include <string>

namespace olvex {

// How host objects report failure: an error number and a description, as the operator sees
// them in the coded line ("Error " + number + ", " + description).
class OLVEX_CORE_EXPORT Error : public std::exception
{
public:
    Error(int number, QString description);

    int number() const noexcept { return m_number; }
    const QString &description() const noexcept { return m_description; }
    const char *what() const noexcept override { return m_what.c_str(); }

private:
    int m_number;
    QString m_description;
    std::string m_what;
};

// Error numbers used when something other than an olvex::Error was caught.
inline constexpr int kOutOfMemoryError = 7;
inline constexpr int kInternalError = 51;

// What a handler caught, reduced to number and description.
struct OLVEX_CORE_EXPORT CaughtError
{
    int number = kInternalError;
    QString description;

    // "Error 51, description": the tail that unexpected errors add to a coded line.
    QString errorText() const;
    // "51, description": number and description alone.
    QString numberAndDescription() const;
};

// Call only inside a catch block: classifies the exception in flight.
OLVEX_CORE_EXPORT CaughtError currentError();

// Runs body; any exception is turned into a CaughtError and handed to onError, which must not
// throw. Lets a Qt slot keep the rule that nothing escapes it.
template<class Body, class OnError>
void guarded(Body &&body, OnError &&onError) noexcept
{
    try {
        body();
    } catch (...) {
        try {
            onError(currentError());
        } catch (...) {
            // The error handler itself failed (e.g. out of memory while logging): drop it.
        }
    }
}

} // namespace olvex
