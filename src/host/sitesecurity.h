#pragma once

#include "common/host.h"

#include <memory>

namespace olvex {

class SiteStore;

// The security object of the reference host: answers for one user of the site, from the
// privileges the site grants that user now. It refuses everything until Initialize has found
// the site and the user, and whenever it cannot tell (fails closed).
class SiteSecurity final : public Security
{
public:
    // The site is opened from the first connection text given to Initialize, or, when that
    // text names the given store (or is empty), the given store is used.
    explicit SiteSecurity(QString userName, std::shared_ptr<SiteStore> store = nullptr);
    ~SiteSecurity() override;

    void Initialize(const QString &text1, const QString &text2, const QString &text3,
                    const QString &text4, const QString &clientName, int flags) override;
    // True only for a defined PID and a user holding Privileges::ChangeSettings (or every
    // privilege).
    bool CanChangeSetting(qint32 pid, bool defined) override;

    bool isInitialized() const { return m_ready; }

private:
    QString m_userName;
    std::shared_ptr<SiteStore> m_given;
    std::shared_ptr<SiteStore> m_store;
    bool m_ready = false;
};

} // namespace olvex
