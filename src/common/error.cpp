#include "common/error.h"

#include <new>

namespace olvex {

Error::Error(int number, QString description)
    : m_number(number)
    , m_description(std::move(description))
    , m_what(QString(u"Error " + QString::number(number) + u", " + m_description).toStdString())
{}

QString CaughtError::errorText() const
{
    return u"Error " + QString::number(number) + u", " + description;
}

QString CaughtError::numberAndDescription() const
{
    return QString::number(number) + u", " + description;
}

CaughtError currentError()
{
    try {
        throw;
    } catch (const Error &e) {
        return {e.number(), e.description()};
    } catch (const std::bad_alloc &) {
        return {kOutOfMemoryError, QStringLiteral("Out of memory")};
    } catch (const std::exception &e) {
        return {kInternalError, QString::fromLocal8Bit(e.what())};
    } catch (...) {
        return {kInternalError, QStringLiteral("Unknown error")};
    }
}

} // namespace olvex
