#include "das/commandhandlers.h"

namespace olvex {

void CommandHandlers::add(const QString &action, CommandHandler handler)
{
    m_handlers.insert(action, std::move(handler));
}

void CommandHandlers::remove(const QString &action)
{
    m_handlers.remove(action);
}

const CommandHandler *CommandHandlers::find(const QString &action) const
{
    const auto it = m_handlers.constFind(action);
    return it == m_handlers.constEnd() ? nullptr : &it.value();
}

QStringList CommandHandlers::actions() const
{
    QStringList names = m_handlers.keys();
    names.sort();
    return names;
}

} // namespace olvex
