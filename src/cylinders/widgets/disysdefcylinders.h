#pragma once

#include "common/olvexexport.h"

#include "common/host.h"

#include <QString>
#include <QWidget>

#include <memory>

class QPushButton;
class QTreeWidgetItem;

namespace olvex {

class ReportList;
class UiServices;
struct CylinderRow;

// The list of calibration gas cylinders: ID, expiration date, component gases, EPA vendor ID,
// gas type codes and pressure, one row per cylinder parameter. An expired cylinder shows in red
// with a warning icon, one that expires within 30 days in amber; the row's tooltip gives the
// days. Edit (or Enter, or a double click) opens the cylinder edit dialog on the selected row.
//
// Failures go to the message log given to Setup with their CSET code; nothing escapes a handler.
class OLVEX_WIDGETS_EXPORT DISysDefCylinders : public QWidget
{
    Q_OBJECT
public:
    explicit DISysDefCylinders(UiServices *ui = nullptr, QWidget *parent = nullptr);
    ~DISysDefCylinders() override;

    // cylinderList: PIDs separated by commas, or empty for every cylinder of the site. Fills
    // the list.
    void Setup(std::shared_ptr<MessageLog> messageLog, std::shared_ptr<DataInterface> dataInterface,
               const QString &cylinderList);
    void Teardown();

    void RefreshCylinderList();

    // Handlers, public so that a host (or a test) can drive the control as the user would.
    void cmdEdit_Click();
    void cmdRefresh_Click() { RefreshCylinderList(); }
    void mobjDI_UseSecondaryDasConnectionStringsChanged() { RefreshCylinderList(); }

    ReportList *lsvCylinders() const { return m_lsvCylinders; }
    QPushButton *cmdEdit() const { return m_cmdEdit; }
    QPushButton *cmdRefresh() const { return m_cmdRefresh; }

private:
    void addRow(const CylinderRow &row);
    void log(const QString &line) const;
    void updateEditButton();

    UiServices *m_ui;
    std::shared_ptr<MessageLog> mobjMessageLog;
    std::shared_ptr<DataInterface> mobjDI;
    QString m_cylinderList;

    ReportList *m_lsvCylinders;
    QPushButton *m_cmdEdit;
    QPushButton *m_cmdRefresh;
};

} // namespace olvex
