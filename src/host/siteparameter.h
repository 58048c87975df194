#pragma once

#include "common/host.h"
#include "host/sitecontext.h"

#include <chrono>
#include <memory>
#include <optional>

namespace olvex {

// A parameter object over the site store. The definition comes from the data interface's
// cache; the live state (current value and change-pending, attribute -91) is read on demand,
// one query for both. A live state that came with the object (GetPidsOfTypes and the PID
// directory's GetPids read them for the whole list at once) serves the first read of each of the
// two, if it is younger than a few seconds; every later read asks the store again.
class SiteParameter final : public Parameter
{
public:
    // live, when given, was read at readAt (a list's objects share one time).
    SiteParameter(std::shared_ptr<SiteContext> context, DefinitionCache::Record definition,
                  std::optional<LiveState> live = std::nullopt,
                  std::chrono::steady_clock::time_point readAt = std::chrono::steady_clock::now());

    QString GetName(int form = 0) const override;
    int ParameterType() const override;
    qint32 PidNumber() const override;
    Value GetAttribute(int number) const override;
    // Writes at once, with an audit row. Attribute -91 follows the value writes and is refused.
    void SetAttribute(int number, const Value &value) override;
    CurrentValue GetCurrentValue() const override;
    // Mode 3 queues the write for the service; any other mode is refused (error 5).
    void SetValues(int mode, const Value &value) override;
    bool InError() const override;
    QString UnitName() const override;

    QString UnitsText() const;

private:
    const ParameterRecord &definition() const;
    void readLive() const;

    struct Live
    {
        LiveState state;
        std::chrono::steady_clock::time_point readAt;
        bool valueUnread = true;
        bool pendingUnread = true;
    };

    std::shared_ptr<SiteContext> m_context;
    mutable DefinitionCache::Record m_definition;
    mutable quint64 m_generation;
    mutable std::optional<Live> m_live;
};

} // namespace olvex
