#include "host/sitedatainterface.h"

#include "common/error.h"
#include "host/audittrailread.h"
#include "host/siteclock.h"
#include "host/siteparameter.h"
#include "host/siteservices.h"
#include "host/storeerrors.h"

#include <QStandardPaths>
#include <QSysInfo>

namespace olvex {

namespace {

Actor actorFor(SiteStore &store, const HostSession &session)
{
    const auto user = store.user(session.userName);
    if (!user) {
        throw Error(StoreError::UnknownUser,
                    u"site " + store.siteId() + u" has no user '" + session.userName + u'\'');
    }
    Actor actor;
    actor.userName = user->name;
    actor.clientName
        = session.clientName.isEmpty() ? QSysInfo::machineHostName() : session.clientName;
    actor.clientAddress
        = session.clientAddress.isEmpty() ? QStringLiteral("127.0.0.1") : session.clientAddress;
    return actor;
}

} // namespace

SiteDataInterface::SiteDataInterface(std::shared_ptr<SiteStore> store, const HostSession &session,
                                     QObject *parent)
    : DataInterface(parent)
    , m_context(std::make_shared<SiteContext>(store, actorFor(*store, session)))
    , m_clock(std::make_shared<SiteClock>())
    , m_log(std::make_shared<SiteMessageLog>(m_context))
{
    m_exportFolder = session.exportFolder;
    if (m_exportFolder.isEmpty()) {
        m_exportFolder = store->site().exportFolder;
    }
    if (m_exportFolder.isEmpty()) {
        m_exportFolder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    }
    m_context->cache.revalidate();
}

SiteDataInterface::~SiteDataInterface() = default;

QString SiteDataInterface::ClientName() const
{
    return m_context->actor.clientName;
}

QString SiteDataInterface::ClientAddress() const
{
    return m_context->actor.clientAddress;
}

ConnectionDescription SiteDataInterface::ConnectionSettings() const
{
    ConnectionDescription description;
    description.DataConnection = m_context->store->connectionText();
    description.DasConnection = m_context->store->connectionText();
    description.ExportFolder = m_exportFolder;
    return description;
}

std::shared_ptr<ClockLibrary> SiteDataInterface::Clock()
{
    return m_clock;
}

QString SiteDataInterface::GetSiteId() const
{
    return m_context->store->siteId();
}

ParameterList SiteDataInterface::GetPidsOfTypes(const QList<int> &types)
{
    return GetPidsOfTypesWith(types, {});
}

ParameterList SiteDataInterface::GetPidsOfTypesWith(const QList<int> &types,
                                                    const QList<int> &attributes)
{
    DefinitionCache &cache = m_context->cache;
    cache.revalidate();
    QList<DefinitionCache::Record> records;
    QList<std::pair<qint32, LiveState>> states; // ascending by PID
    // Without attributes named, the list comes with all of them, so that reading its objects
    // costs no further query.
    if (!attributes.isEmpty() && !types.isEmpty()
        && cache.missingTypes(types).size() == types.size()) {
        // Nothing of the list cached yet: definitions, attributes and live states in one go.
        SiteStore::ListRead read = m_context->store->readList(types, attributes);
        states = std::move(read.live);
        records = cache.adoptTypes(types, std::move(read.records), std::move(read.columns));
    } else {
        records = cache.ofTypes(types);
        cache.loadAttributes(types, attributes);
        states = m_context->store->liveStatesOfTypes(types);
    }
    // The list's objects live in one block, which each of them keeps alive: one allocation for
    // the list rather than one per object.
    struct Block
    {
        std::unique_ptr<std::optional<SiteParameter>[]> objects;
    };
    const auto block = std::make_shared<Block>();
    block->objects = std::make_unique<std::optional<SiteParameter>[]>(size_t(records.size()));
    // Both ascending by PID: one walk pairs them.
    const auto readAt = std::chrono::steady_clock::now();
    ParameterList parameters;
    parameters.reserve(records.size());
    auto state = states.begin();
    for (qsizetype i = 0; i < records.size(); ++i) {
        const DefinitionCache::Record &record = records[i];
        while (state != states.end() && state->first < record->pid) {
            ++state;
        }
        LiveState live;
        if (state != states.end() && state->first == record->pid) {
            live = std::move(state->second);
        }
        SiteParameter &object
            = block->objects[size_t(i)].emplace(m_context, record, std::move(live), readAt);
        parameters.append(ParameterPtr(block, &object));
    }
    return parameters;
}

std::shared_ptr<PidDirectory> SiteDataInterface::GetPidDirectory()
{
    m_context->cache.revalidate();
    return std::make_shared<SitePidDirectory>(m_context);
}

std::shared_ptr<UnitsLookup> SiteDataInterface::GetUnitsLookup()
{
    return std::make_shared<SiteUnitsLookup>(m_context);
}

std::shared_ptr<User> SiteDataInterface::GetUser()
{
    auto user = m_context->store->user(m_context->actor.userName);
    if (!user) {
        throw Error(StoreError::UnknownUser, u"site " + m_context->store->siteId()
                                                 + u" no longer has user '"
                                                 + m_context->actor.userName + u'\'');
    }
    return std::make_shared<SiteUser>(std::move(*user));
}

std::shared_ptr<MessageRecords> SiteDataInterface::GetMessageRecords()
{
    return std::make_shared<SiteMessageRecords>(m_context);
}

int SiteDataInterface::GetChannelKind(int channel)
{
    return m_context->store->channelKind(channel);
}

std::shared_ptr<MessageLog> SiteDataInterface::MessageLog()
{
    return m_log;
}

bool SiteDataInterface::AlternativeState() const
{
    return m_context->cache.alternativeState();
}

QList<AuditEntry> SiteDataInterface::ReadAuditTrail(qint32 pid, bool valuesOnly, int maxEntries)
{
    return readAuditTrail(*m_context->store, pid, valuesOnly, maxEntries);
}

} // namespace olvex
