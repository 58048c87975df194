#include "host/sitesecurity.h"

#include "host/sitestore.h"

namespace olvex {

SiteSecurity::SiteSecurity(QString userName, std::shared_ptr<SiteStore> store)
    : m_userName(std::move(userName))
    , m_given(std::move(store))
{}

SiteSecurity::~SiteSecurity() = default;

void SiteSecurity::Initialize(const QString &text1, const QString &, const QString &,
                              const QString &, const QString &, int)
{
    m_ready = false;
    m_store.reset();
    try {
        if (m_given && (text1.isEmpty() || text1 == m_given->connectionText())) {
            m_store = m_given;
        } else {
            m_store = SiteStore::open(text1);
        }
        m_ready = m_store->user(m_userName).has_value();
    } catch (...) {
        m_store.reset();
        m_ready = false;
    }
}

bool SiteSecurity::CanChangeSetting(qint32 pid, bool defined)
{
    if (!m_ready || !defined) {
        return false;
    }
    try {
        const auto user = m_store->user(m_userName);
        return user && user->has(Privileges::ChangeSettings) && m_store->parameterExists(pid);
    } catch (...) {
        return false;
    }
}

} // namespace olvex
