#pragma once

// An in-memory site with calibration parameters whose "1m" items the test sets.
#include "common/host.h"
#include "common/vocabulary.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"

#include <QHash>

#include <memory>
#include <utility>

namespace olvex::testing {

class FakeCurrentDataReader : public CurrentDataReader
{
public:
    struct Data
    {
        QString text;
        int status = 0;
    };
    struct Item : CurrentDataItem
    {
        explicit Item(Data d)
            : data(std::move(d))
        {}
        QString Text() const override { return data.text; }
        int Status() const override { return data.status; }
        Data data;
    };
    std::shared_ptr<CurrentDataItem> GetCurrentDataItem(qint32 pid, const QString &key) override
    {
        return key == u"1m" && items.contains(pid) ? std::make_shared<Item>(items.value(pid))
                                                   : nullptr;
    }
    void set(qint32 pid, QString text, int status = 0)
    {
        items.insert(pid, {std::move(text), status});
    }
    void remove(qint32 pid) { items.remove(pid); }

    QHash<qint32, Data> items;
};

inline constexpr qint32 kSO2Cal = 101030001; // 1-010-3-00-01
inline constexpr qint32 kNOxCal = 101030002;

// A record as the service writes it; pending or not.
inline QString calRecord(bool pending, const QString &reason = QStringLiteral("Daily calibration"),
                         bool defaultConfirm = true,
                         const QString &start = QStringLiteral("2026/03/01 02:15 PM"))
{
    const auto flag = [](bool on) {
        return on ? QStringLiteral("1") : QStringLiteral("0");
    };
    return u"<XValue><CalStart><CalEnabled>1</CalEnabled><CalConfirmPending>" + flag(pending)
           + u"</CalConfirmPending><CalConfirmPendingCalType>" + reason
           + u"</CalConfirmPendingCalType><CalConfirmScheduledStartTime>" + start
           + u"</CalConfirmScheduledStartTime><CalConfirmDefaultConfirm>" + flag(defaultConfirm)
           + u"</CalConfirmDefaultConfirm><CalConfirmExpirationTime>2026/03/01 02:45 PM"
             u"</CalConfirmExpirationTime></CalStart></XValue>";
}

struct CalConfirmSite
{
    CalConfirmSite()
    {
        di->setMessageLog(log);
        di->setUser(QStringLiteral("op&1"));
        di->setClientAddress(QStringLiteral("10.0.0.5"));
        const Value yes(true);
        for (const auto &[pid, name] : {std::pair{kSO2Cal, QStringLiteral("SO2 Cal")},
                                        std::pair{kNOxCal, QStringLiteral("NOx Cal")}}) {
            di->addParameter(pid, ParameterTypes::Calibration, name)
                ->setAttributeValue(CalibrationAttr::SupportsConfirmation, yes);
            reader->set(pid, calRecord(false));
        }
    }
    QStringList postedTexts() const
    {
        QStringList texts;
        for (const auto &post : di->messageRecords()->posts()) {
            texts << post.text;
        }
        return texts;
    }

    std::shared_ptr<FakeDataInterface> di = std::make_shared<FakeDataInterface>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    std::shared_ptr<FakeCurrentDataReader> reader = std::make_shared<FakeCurrentDataReader>();
};

} // namespace olvex::testing
