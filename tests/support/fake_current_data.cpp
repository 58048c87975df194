#include "support/fake_current_data.h"

#include <algorithm>

namespace olvex {

std::shared_ptr<CurrentDataItem> FakeCurrentDataReader::GetCurrentDataItem(qint32 pid,
                                                                           const QString &key)
{
    m_requests.append({pid, key});
    if (const auto failure = m_failures.constFind(pid); failure != m_failures.cend()) {
        throw *failure;
    }
    const auto item = m_items.constFind({pid, key});
    if (item == m_items.cend()) {
        return nullptr;
    }
    return std::make_shared<FakeCurrentDataItem>(item->text, item->status);
}

void FakeCurrentDataReader::setItem(qint32 pid, const QString &text, int status, const QString &key)
{
    m_items.insert({pid, key}, Item{text, status});
}

void FakeCurrentDataReader::removeItem(qint32 pid, const QString &key)
{
    m_items.remove({pid, key});
}

void FakeCurrentDataReader::setFailure(qint32 pid, std::optional<Error> error)
{
    if (error) {
        m_failures.insert(pid, *error);
    } else {
        m_failures.remove(pid);
    }
}

int FakeCurrentDataReader::requestCount(qint32 pid) const
{
    return int(std::count_if(m_requests.cbegin(), m_requests.cend(),
                             [pid](const Request &r) { return r.pid == pid; }));
}

} // namespace olvex
