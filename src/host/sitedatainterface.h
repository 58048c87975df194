#pragma once

#include "common/audittrail.h"
#include "common/host.h"
#include "host/sitecontext.h"

#include <memory>

namespace olvex {

// Who uses the data interface, and from which computer.
struct HostSession
{
    HostSession() = default;
    explicit HostSession(QString user)
        : userName(std::move(user))
    {}

    QString userName;
    QString clientName;    // empty: this computer's host name
    QString clientAddress; // empty: 127.0.0.1
    QString exportFolder;  // empty: the site's, else the user's documents folder
};

class SiteClock;
class SiteMessageLog;

// The data interface over a site store (see sitestore.h for how to open one):
//     auto store = SiteStore::open(text);
//     auto di = std::make_shared<SiteDataInterface>(store, HostSession{"operator"});
// Throws olvex::Error when the site knows no such user. Every read goes through a definition
// cache that is checked against the site's revision at the start of each list fill, so a list
// (GetPidsOfTypes, or a directory's GetPids) costs a few queries whatever its length; current
// values are read again on demand.
class SiteDataInterface final : public DataInterface, public AuditTrail
{
    Q_OBJECT
public:
    SiteDataInterface(std::shared_ptr<SiteStore> store, const HostSession &session,
                      QObject *parent = nullptr);
    ~SiteDataInterface() override;

    QString ClientName() const override;
    QString ClientAddress() const override;
    // The site's own connection text serves both the data and the service connection; there is
    // no secondary connection.
    ConnectionDescription ConnectionSettings() const override;
    std::shared_ptr<ClockLibrary> Clock() override;
    QString GetSiteId() const override;
    // Ascending by PID: two queries for the definitions with all their attributes the first
    // time a type is asked for, one for the live states of the whole list every time.
    ParameterList GetPidsOfTypes(const QList<int> &types) override;
    // The first list of the types reads the definitions, the attributes of the numbers and the
    // live states in one pass over the site (SiteStore::readList), and any other attribute one
    // number at a time for the whole list when it is first asked for; later lists read the live
    // states and any attribute named not read yet.
    ParameterList GetPidsOfTypesWith(const QList<int> &types,
                                     const QList<int> &attributes) override;
    std::shared_ptr<PidDirectory> GetPidDirectory() override;
    std::shared_ptr<UnitsLookup> GetUnitsLookup() override;
    // The session's user with the privileges the site grants now.
    std::shared_ptr<User> GetUser() override;
    std::shared_ptr<MessageRecords> GetMessageRecords() override;
    int GetChannelKind(int channel) override;
    std::shared_ptr<olvex::MessageLog> MessageLog() override;
    bool AlternativeState() const override;
    QList<AuditEntry> ReadAuditTrail(qint32 pid, bool valuesOnly, int maxEntries) override;

    const std::shared_ptr<SiteStore> &store() const { return m_context->store; }
    const Actor &actor() const { return m_context->actor; }

private:
    std::shared_ptr<SiteContext> m_context;
    QString m_exportFolder;
    std::shared_ptr<SiteClock> m_clock;
    std::shared_ptr<SiteMessageLog> m_log;
};

} // namespace olvex
