#pragma once

#include "common/xml.h"
#include "host/commandqueue.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>

namespace olvex {

class SiteStore;

// What a handler is given to carry out one command record.
//
// The handler runs inside the service's write transaction: everything it changes through the
// store commits together with the record's result, or not at all. So a handler that throws, or a
// service that dies half way, leaves the store as it was, and the record is carried out again
// from the start by whoever claims it next.
struct CommandContext
{
    SiteStore &store;
    const CommandRecord &record;
    // The record's element (usually <Command>), already parsed; its attributes in the order the
    // sender wrote them.
    XmlNode command;
    QString action;
    // A handler that works for long calls this now and then: it renews the claim when a good
    // part of the lease has gone by, and answers false once the record is no longer this
    // service's (the handler should then return at once; its changes are discarded).
    std::function<bool()> keepClaim;
};

// A handler's answer: done or failed, and the text stored as the record's result.
struct CommandOutcome
{
    bool succeeded = true;
    QString message;

    static CommandOutcome done(const QString &message = QStringLiteral("done"))
    {
        return {true, message};
    }
    static CommandOutcome failed(const QString &message) { return {false, message}; }
};

// A handler may also throw olvex::Error: the record is then marked failed with the error's
// description (a store failure is retried a few times first).
using CommandHandler = std::function<CommandOutcome(CommandContext &)>;

// The handlers of the service, keyed by the command's `action` attribute (exact, case-sensitive
// match). The components that post a command bring its handler along and add it here.
class CommandHandlers
{
public:
    // Adds or replaces the handler of action.
    void add(const QString &action, CommandHandler handler);
    void remove(const QString &action);
    // Null when the action has no handler.
    const CommandHandler *find(const QString &action) const;
    bool contains(const QString &action) const { return m_handlers.contains(action); }
    // Sorted.
    QStringList actions() const;

private:
    QHash<QString, CommandHandler> m_handlers;
};

} // namespace olvex
