#pragma once

#include "host/definitioncache.h"
#include "host/sitestore.h"

#include <memory>

namespace olvex {

// What a data interface shares with every object it hands out: the store, the definition
// cache, and who is at the keyboard. Objects keep it alive, so a parameter object may outlive
// the data interface that made it.
struct SiteContext
{
    SiteContext(std::shared_ptr<SiteStore> s, Actor a)
        : store(std::move(s))
        , cache(store)
        , actor(std::move(a))
    {}

    std::shared_ptr<SiteStore> store;
    DefinitionCache cache;
    Actor actor;
};

} // namespace olvex
