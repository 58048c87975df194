#include "olvexdesignerplugin.h"

#include "calconfirm/widgets/dicalconfirm.h"
#include "calconfirm/widgets/dicalconfirmsingle.h"
#include "calstart/widgets/dicalstart.h"
#include "cylinders/widgets/disysdefcylinders.h"
#include "importexport/widgets/disettingsimportexport.h"
#include "settings/widgets/disettings.h"

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include <iterator>

namespace olvex {

namespace {

struct ComponentEntry
{
    const char *className; // without the namespace
    const char *includeFile;
    const char *toolTip;
    const char *badge; // the letters of its widget box icon
    QRgb colour;
    QWidget *(*create)(QWidget *parent);
};

// One row per component. The components take their UI services first; Designer shows them
// with the Qt implementation.
const ComponentEntry kComponents[] = {
    {"DISettings", "settings/widgets/disettings.h",
     "Settings editor: setting groups, their values and alarm setpoints", "Se", 0xff1f4e79,
     [](QWidget *parent) -> QWidget * {
         return new DISettings(nullptr, parent);
     }},
    {"DISettingsImportExport", "importexport/widgets/disettingsimportexport.h",
     "Settings import and export: every setting to a CSV file and back", "IE", 0xff2e7d32,
     [](QWidget *parent) -> QWidget * {
         return new DISettingsImportExport(nullptr, parent);
     }},
    {"DICalStart", "calstart/widgets/dicalstart.h",
     "Calibration start: daily, startup and operating-hour checks, manual start and abort", "CS",
     0xffb45309,
     [](QWidget *parent) -> QWidget * {
         return new DICalStart(nullptr, parent);
     }},
    {"DISysDefCylinders", "cylinders/widgets/disysdefcylinders.h",
     "Calibration gas cylinders: expiration, gases and codes, with the cylinder edit dialog", "Cy",
     0xff6a1b9a,
     [](QWidget *parent) -> QWidget * {
         return new DISysDefCylinders(nullptr, parent);
     }},
    {"DICalConfirm", "calconfirm/widgets/dicalconfirm.h",
     "Calibration confirmation: the calibrations waiting for the operator to confirm or cancel",
     "CC", 0xffc62828,
     [](QWidget *parent) -> QWidget * {
         return new DICalConfirm(parent);
     }},
    {"DICalConfirmSingle", "calconfirm/widgets/dicalconfirmsingle.h",
     "One pending calibration: its reason, start time and deadline, with Confirm and Cancel", "C1",
     0xffad1457,
     [](QWidget *parent) -> QWidget * {
         return new DICalConfirmSingle(parent);
     }},
};

QIcon badgeIcon(const ComponentEntry &entry)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgba(entry.colour));
    painter.drawRoundedRect(QRectF(1, 1, 30, 30), 6, 6);
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(14);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(pixmap.rect(), Qt::AlignCenter, QString::fromLatin1(entry.badge));
    painter.end();
    return QIcon(pixmap);
}

class ComponentWidget : public QDesignerCustomWidgetInterface
{
public:
    explicit ComponentWidget(const ComponentEntry &entry)
        : m_entry(entry)
    {}

    QString name() const override { return u"olvex::" + QString::fromLatin1(m_entry.className); }
    QString group() const override { return QStringLiteral("Olvex Settings"); }
    QString toolTip() const override { return QString::fromLatin1(m_entry.toolTip); }
    QString whatsThis() const override { return toolTip(); }
    QString includeFile() const override { return QString::fromLatin1(m_entry.includeFile); }
    QIcon icon() const override { return badgeIcon(m_entry); }
    bool isContainer() const override { return false; }
    QWidget *createWidget(QWidget *parent) override { return m_entry.create(parent); }
    bool isInitialized() const override { return m_initialized; }
    void initialize(QDesignerFormEditorInterface *) override { m_initialized = true; }
    QString domXml() const override
    {
        return u"<ui language=\"c++\"><widget class=\"" + name() + u"\" name=\""
               + QString::fromLatin1(m_entry.className).toLower() + u"\"/></ui>";
    }

private:
    const ComponentEntry &m_entry;
    bool m_initialized = false;
};

} // namespace

OlvexDesignerPlugin::OlvexDesignerPlugin(QObject *parent)
    : QObject(parent)
{
    for (const ComponentEntry &entry : kComponents) {
        m_widgets.push_back(std::make_unique<ComponentWidget>(entry));
    }
}

OlvexDesignerPlugin::~OlvexDesignerPlugin() = default;

QList<QDesignerCustomWidgetInterface *> OlvexDesignerPlugin::customWidgets() const
{
    QList<QDesignerCustomWidgetInterface *> widgets;
    for (const auto &widget : m_widgets) {
        widgets.append(widget.get());
    }
    return widgets;
}

} // namespace olvex
