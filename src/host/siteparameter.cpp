#include "host/siteparameter.h"

#include "common/error.h"
#include "common/vocabulary.h"
#include "host/storeerrors.h"

namespace olvex {

namespace {

// How long a live state read with a whole list may stand in for a fresh read.
constexpr auto kBatchFreshness = std::chrono::seconds(5);

// The host system's "Invalid procedure call or argument".
constexpr int kInvalidCall = 5;

} // namespace

SiteParameter::SiteParameter(std::shared_ptr<SiteContext> context,
                             DefinitionCache::Record definition, std::optional<LiveState> live,
                             std::chrono::steady_clock::time_point readAt)
    : m_context(std::move(context))
    , m_definition(std::move(definition))
    , m_generation(m_context->cache.generation())
{
    Q_ASSERT(m_definition);
    if (live) {
        m_live = Live{std::move(*live), readAt};
    }
}

const ParameterRecord &SiteParameter::definition() const
{
    if (m_generation != m_context->cache.generation()) {
        // The cache moved on (a write, or another program's change): take its current
        // definition; keep the one held if the PID has meanwhile lost its definition.
        if (DefinitionCache::Record fresh = m_context->cache.find(m_definition->pid)) {
            m_definition = std::move(fresh);
        }
        m_generation = m_context->cache.generation();
    }
    return *m_definition;
}

void SiteParameter::readLive() const
{
    m_live = Live{m_context->store->liveState(m_definition->pid), std::chrono::steady_clock::now()};
}

QString SiteParameter::GetName(int) const
{
    return definition().name;
}

int SiteParameter::ParameterType() const
{
    return definition().type;
}

qint32 SiteParameter::PidNumber() const
{
    return m_definition->pid;
}

Value SiteParameter::GetAttribute(int number) const
{
    if (number == SettingAttr::ChangePending) {
        if (!m_live || !m_live->pendingUnread
            || std::chrono::steady_clock::now() - m_live->readAt > kBatchFreshness) {
            readLive();
        }
        m_live->pendingUnread = false;
        return Value(m_live->state.changePending);
    }
    const Value *value = definition().attribute(number);
    return value ? *value : Value::null();
}

void SiteParameter::SetAttribute(int number, const Value &value)
{
    const qint32 pid = m_definition->pid;
    const qint64 revision = m_context->store->setAttribute(pid, number, value, m_context->actor,
                                                           QStringLiteral("SetAttribute"));
    m_context->cache.attributeWritten(pid, number, value, revision);
}

CurrentValue SiteParameter::GetCurrentValue() const
{
    if (!m_live || !m_live->valueUnread
        || std::chrono::steady_clock::now() - m_live->readAt > kBatchFreshness) {
        readLive();
    }
    m_live->valueUnread = false;
    return m_live->state.current;
}

void SiteParameter::SetValues(int mode, const Value &value)
{
    if (mode != WriteMode::Queued) {
        throw Error(kInvalidCall, u"Invalid procedure call: SetValues mode " + QString::number(mode)
                                      + u" (only mode 3, a write through the service, is kept)");
    }
    m_context->store->queueValueWrite(m_definition->pid, value, m_context->actor);
    m_live.reset(); // the next read shows the write pending
}

bool SiteParameter::InError() const
{
    return definition().inError;
}

QString SiteParameter::UnitName() const
{
    return definition().unitName;
}

QString SiteParameter::UnitsText() const
{
    return definition().unitsText;
}

} // namespace olvex
