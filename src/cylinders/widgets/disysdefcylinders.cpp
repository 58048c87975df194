#include "cylinders/widgets/disysdefcylinders.h"

#include "common/error.h"
#include "common/pid.h"
#include "common/widgets/reportlist.h"
#include "common/widgets/uiservices.h"
#include "cylinders/cylinderrow.h"
#include "cylinders/widgets/frmeditcylinderinfo.h"

#include <QBrush>
#include <QColor>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

// A static library's resources are registered by hand, once, outside any namespace.
static void registerCylinderResources()
{
    static const bool registered = [] {
        Q_INIT_RESOURCE(cylinders);
        return true;
    }();
    Q_UNUSED(registered);
}

namespace olvex {

namespace {

enum CylinderIcon { Plain = 1, ExpiresSoon = 2, Expired = 3 };

QIcon cylinderIcon(const char *name)
{
    registerCylinderResources();
    return QIcon(u":/olvex/cylinders/icons/" + QString::fromLatin1(name) + u".svg");
}

// Dark enough to read on a white row, and unlike the red of an expired one.
const QColor kExpiringText(0xa0, 0x5a, 0x00);
const QColor kExpiredText(0xc6, 0x28, 0x28);

} // namespace

DISysDefCylinders::DISysDefCylinders(UiServices *ui, QWidget *parent)
    : QWidget(parent)
    , m_ui(ui)
    , m_lsvCylinders(new ReportList(this))
    , m_cmdEdit(new QPushButton(QStringLiteral("&Edit..."), this))
    , m_cmdRefresh(new QPushButton(QStringLiteral("&Refresh"), this))
{
    setObjectName(QStringLiteral("DISysDefCylinders"));
    m_lsvCylinders->setObjectName(QStringLiteral("lsvCylinders"));
    m_cmdEdit->setObjectName(QStringLiteral("cmdEdit"));
    m_cmdRefresh->setObjectName(QStringLiteral("cmdRefresh"));
    m_lsvCylinders->setColumns(cylinderColumns());
    m_lsvCylinders->setSmallIcons({{Plain, cylinderIcon("cylinder")},
                                   {ExpiresSoon, cylinderIcon("cylinder-expiring")},
                                   {Expired, cylinderIcon("cylinder-expired")}});
    m_lsvCylinders->setAccessibleName(QStringLiteral("Gas cylinders"));
    m_cmdRefresh->setToolTip(QStringLiteral("Read the cylinders again"));

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdEdit);
    buttons->addWidget(m_cmdRefresh);
    buttons->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_lsvCylinders, 1);
    layout->addLayout(buttons);

    connect(m_cmdEdit, &QPushButton::clicked, this, &DISysDefCylinders::cmdEdit_Click);
    connect(m_cmdRefresh, &QPushButton::clicked, this, &DISysDefCylinders::cmdRefresh_Click);
    connect(m_lsvCylinders, &ReportList::rowActivated, this, &DISysDefCylinders::cmdEdit_Click);
    connect(m_lsvCylinders, &QTreeWidget::currentItemChanged, this,
            &DISysDefCylinders::updateEditButton);
    updateEditButton();
}

DISysDefCylinders::~DISysDefCylinders()
{
    Teardown();
}

void DISysDefCylinders::Setup(std::shared_ptr<MessageLog> messageLog,
                              std::shared_ptr<DataInterface> dataInterface,
                              const QString &cylinderList)
{
    Teardown();
    mobjMessageLog = std::move(messageLog);
    mobjDI = std::move(dataInterface);
    m_cylinderList = cylinderList;
    if (mobjDI) {
        connect(mobjDI.get(), &DataInterface::UseSecondaryDasConnectionStringsChanged, this,
                &DISysDefCylinders::mobjDI_UseSecondaryDasConnectionStringsChanged);
    }
    RefreshCylinderList();
}

void DISysDefCylinders::Teardown()
{
    if (mobjDI) {
        disconnect(mobjDI.get(), nullptr, this, nullptr);
    }
    mobjDI.reset();
    mobjMessageLog.reset();
}

void DISysDefCylinders::log(const QString &line) const
{
    if (!mobjMessageLog) {
        return;
    }
    try {
        mobjMessageLog->LogMessage(Severity::Error, line);
    } catch (...) {
        // Nowhere else to report it; the list goes on.
    }
}

void DISysDefCylinders::RefreshCylinderList()
{
    const QString selectedKey = ReportList::rowKey(m_lsvCylinders->selectedRow());
    try {
        m_lsvCylinders->clearRows();
        if (mobjDI) {
            const QDate today = mobjDI->Clock()->Now().date();
            ReportList::Batch batch(*m_lsvCylinders);
            if (m_cylinderList.isEmpty()) {
                const ParameterList cylinders = mobjDI->GetPidsOfTypesWith(
                    {ParameterTypes::GasCylinder}, cylinderRowAttributes());
                for (const ParameterPtr &cylinder : cylinders) {
                    try {
                        addRow(cylinderRow(*cylinder, today));
                    } catch (...) {
                        log(u"CSET-0004: " + currentError().description);
                    }
                }
            } else {
                const QList<qint32> pids = cylinderListPids(m_cylinderList);
                const std::shared_ptr<PidDirectory> directory = mobjDI->GetPidDirectory();
                const ParameterList cylinders = directory->GetPids(pids);
                for (qsizetype i = 0; i < pids.size(); ++i) {
                    try {
                        const ParameterPtr &cylinder = cylinders.value(i);
                        if (!cylinder) {
                            log(u"CSET-0003: can't load cylinder " + FormatPid(pids[i])
                                + u"; PID does not exist");
                            continue;
                        }
                        addRow(cylinderRow(*cylinder, today));
                    } catch (...) {
                        log(u"CSET-0004: " + currentError().description);
                    }
                }
            }
        }
    } catch (...) {
        log(u"CSET-0002: " + currentError().description);
    }
    if (m_lsvCylinders->rowCount() == 0) {
        m_lsvCylinders->addRow(QString(), QStringLiteral("No cylinders"), QString());
    } else {
        // The row that was selected stays so; else the first, ready for Edit.
        QTreeWidgetItem *row = m_lsvCylinders->findByKey(selectedKey);
        m_lsvCylinders->selectRow(row ? row : m_lsvCylinders->row(0));
    }
    for (int column = 0; column < m_lsvCylinders->columnCount() - 1; ++column) {
        m_lsvCylinders->autoSizeColumn(column);
    }
    updateEditButton();
}

void DISysDefCylinders::addRow(const CylinderRow &row)
{
    const int icon = row.expiry == CylinderExpiry::Expired       ? Expired
                     : row.expiry == CylinderExpiry::ExpiresSoon ? ExpiresSoon
                                                                 : Plain;
    QTreeWidgetItem *item = m_lsvCylinders->addRow(row.key, row.cells.value(0), QString(), icon);
    for (int column = 1; column < row.cells.size(); ++column) {
        ReportList::setSubItem(item, column, row.cells[column]);
    }
    if (icon == Plain) {
        return;
    }
    const QString note = expiryNote(row.daysToExpiry);
    const QBrush text(icon == Expired ? kExpiredText : kExpiringText);
    for (int column = 0; column < row.cells.size(); ++column) {
        item->setForeground(column, text);
        item->setToolTip(column, note);
    }
    item->setData(1, Qt::AccessibleTextRole, QString(row.cells.value(1) + u" (" + note + u')'));
}

void DISysDefCylinders::updateEditButton()
{
    const qint32 pid = cylinderPidFromKey(ReportList::rowKey(m_lsvCylinders->selectedRow()));
    const bool none
        = m_lsvCylinders->rowCount() == 1 && ReportList::rowKey(m_lsvCylinders->row(0)).isEmpty();
    m_cmdEdit->setEnabled(pid != 0);
    m_cmdEdit->setToolTip(pid != 0 ? QStringLiteral("Edit the selected cylinder.")
                          : none   ? QStringLiteral("There is no cylinder to edit.")
                                   : QStringLiteral("Select a cylinder first."));
}

void DISysDefCylinders::cmdEdit_Click()
{
    const qint32 pid = cylinderPidFromKey(ReportList::rowKey(m_lsvCylinders->selectedRow()));
    if (pid == 0 || !mobjDI) {
        return;
    }
    try {
        const ParameterPtr cylinder = mobjDI->GetPidDirectory()->GetPid(pid, true);
        frmEditCylinderInfo dialog(m_ui, this);
        if (dialog.Setup(cylinder, mobjDI, mobjMessageLog)) {
            UiServices::resolve(m_ui).runModal(dialog);
        }
    } catch (...) {
        log(u"CSET-0005: " + currentError().description);
    }
    RefreshCylinderList();
}

} // namespace olvex
