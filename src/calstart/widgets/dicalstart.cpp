// DICalStart: construction and layout. The handlers are in dicalstart_handlers.cpp.
#include "calstart/widgets/dicalstart.h"

#include "common/widgets/uiservices.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace olvex {

namespace {

// The two captions with a minutes field in them: the check box carries the words before the
// field, a label the words after it; the whole caption (the field's place a run of blanks, as
// the host system draws it) is the check box's accessible name.
const QString kStartupCaption
    = QStringLiteral("Perform a cal check $Spaces$ minutes after the unit begins running");
const QString kNormalOpsCaption = QStringLiteral(
    "Perform a cal check $Spaces$ minutes after the unit enters 'normal operation'");
const QString kSpaces = QString(8, u' ');

template<class T>
T *named(T *widget, const char *name)
{
    widget->setObjectName(QLatin1StringView(name));
    return widget;
}

QLineEdit *minutesField(QWidget *parent, const char *name)
{
    auto *field = named(new QLineEdit(parent), name);
    field->setAlignment(Qt::AlignRight);
    field->setMaxLength(6);
    field->setFixedWidth(field->fontMetrics().horizontalAdvance(u"00000"_s) + 14);
    return field;
}

QLabel *wrappingLabel(const QString &text, QWidget *parent, const char *name)
{
    auto *label = named(new QLabel(text, parent), name);
    label->setWordWrap(true);
    return label;
}

} // namespace

DICalStart::DICalStart(UiServices *ui, QWidget *parent)
    : QWidget(parent)
    , m_ui(ui)
{
    setObjectName(QStringLiteral("DICalStart"));
    buildControls();
    setDefaults();
    showNoData(false);
    m_settingsPanel->setEnabled(false);
    applyEnabling();
}

DICalStart::~DICalStart()
{
    Teardown();
}

QWidget *DICalStart::fraConfirm() const
{
    return m_fraConfirm;
}

QWidget *DICalStart::makeUpDown(QLineEdit *field, int low, int high)
{
    auto *box = new QWidget(field->parentWidget());
    box->setObjectName(u"ud"_s + field->objectName().mid(3));
    auto *layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    const int half = std::max(8, field->sizeHint().height() / 2);
    for (const int step : {1, -1}) {
        auto *button = new QToolButton(box);
        button->setArrowType(step > 0 ? Qt::UpArrow : Qt::DownArrow);
        button->setFixedSize(16, half);
        button->setAutoRepeat(true);
        button->setFocusPolicy(Qt::NoFocus);
        button->setToolTip(step > 0 ? tr("One minute more") : tr("One minute less"));
        layout->addWidget(button);
        connect(button, &QToolButton::clicked, this, [this, field, step, low, high] {
            bool ok = false;
            const int now = field->text().trimmed().toInt(&ok);
            const int next = std::clamp(ok ? now + step : low, low, high);
            field->setText(QString::number(next));
            Q_EMIT field->textEdited(field->text());
        });
    }
    return box;
}

void DICalStart::buildControls()
{
    auto *outer = new QHBoxLayout(this);
    outer->setContentsMargins(6, 6, 6, 6);

    // The parameter list: option buttons stacked in an inner panel that the scroll bar moves.
    m_listArea = named(new QScrollArea(this), "fraParameters");
    m_listArea->setWidgetResizable(true);
    m_listArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_listPanel = named(new QWidget(m_listArea), "fraParameterList");
    m_listLayout = new QVBoxLayout(m_listPanel);
    m_listLayout->setContentsMargins(6, 6, 6, 6);
    m_listLayout->addStretch(1);
    m_listArea->setWidget(m_listPanel);
    m_options = new QButtonGroup(this);
    m_options->setExclusive(true);
    outer->addWidget(m_listArea, 0);

    auto *right = new QVBoxLayout;
    outer->addLayout(right, 1);
    m_settingsArea = named(new QScrollArea(this), "fraSettingsScroll");
    m_settingsArea->setWidgetResizable(true);
    m_settingsArea->setFrameShape(QFrame::NoFrame);
    m_settingsPanel = named(new QWidget(m_settingsArea), "fraSettings");
    auto *panel = new QVBoxLayout(m_settingsPanel);
    panel->setContentsMargins(4, 0, 4, 0);
    m_settingsArea->setWidget(m_settingsPanel);
    right->addWidget(m_settingsArea, 1);

    m_lblNoData = named(new QLabel(tr("No calibration start settings are available for this "
                                      "parameter."),
                                   m_settingsPanel),
                        "lblNoData");
    m_lblNoData->setStyleSheet(QStringLiteral("font-weight: bold"));
    panel->addWidget(m_lblNoData);
    m_chkDisable = named(new QCheckBox(tr("Disable automatic calibration checks"), m_settingsPanel),
                         "chkDisable");
    panel->addWidget(m_chkDisable);

    // Daily checks.
    m_fraDaily = named(new QGroupBox(tr("Daily Calibration Checks"), m_settingsPanel), "fraDaily");
    auto *daily = new QGridLayout(m_fraDaily);
    m_lblTime = named(new QLabel(tr("Perform calibration checks at"), m_fraDaily), "lblTime");
    m_txtTime = named(new QLineEdit(m_fraDaily), "txtTime");
    m_txtTime->setFixedWidth(m_txtTime->fontMetrics().horizontalAdvance(u"00:00 AM"_s) + 20);
    m_lblTime->setBuddy(m_txtTime);
    m_cmdTime = named(new QPushButton(QStringLiteral("..."), m_fraDaily), "cmdTime");
    m_cmdTime->setToolTip(tr("Choose the time of the daily cal check"));
    m_cmdTime->setFixedWidth(m_cmdTime->fontMetrics().horizontalAdvance(u"...."_s) + 16);
    auto *timeRow = new QHBoxLayout;
    timeRow->addWidget(m_lblTime);
    timeRow->addWidget(m_txtTime);
    timeRow->addWidget(m_cmdTime);
    timeRow->addStretch(1);
    daily->addLayout(timeRow, 0, 0);
    m_chkSkipOffline
        = named(new QCheckBox(tr("Skip the daily cal check if the unit is offline at this time"),
                              m_fraDaily),
                "chkSkipOffline");
    daily->addWidget(m_chkSkipOffline, 1, 0);
    m_chkSkipDailyIfOnline = named(new QCheckBox(tr("Skip the daily cal check if an online cal "
                                                    "check has already run during the day"),
                                                 m_fraDaily),
                                   "chkSkipDailyIfOnline");
    daily->addWidget(m_chkSkipDailyIfOnline, 2, 0);
    panel->addWidget(m_fraDaily);

    // Unit startup checks.
    m_fraStartup = named(new QGroupBox(tr("Calibration Checks At Unit Startup"), m_settingsPanel),
                         "fraStartup");
    auto *startup = new QVBoxLayout(m_fraStartup);
    const auto triggerRow
        = [&](const QString &caption, QCheckBox *&box, QLineEdit *&field, QWidget *&upDown,
              QLabel *&tail, const char *boxName, const char *fieldName, const char *tailName) {
              const QStringList parts = caption.split(u"$Spaces$"_s);
              box = named(new QCheckBox(parts.at(0).trimmed(), m_fraStartup), boxName);
              box->setAccessibleName(QString(caption).replace(u"$Spaces$"_s, kSpaces));
              field = minutesField(m_fraStartup, fieldName);
              field->setAccessibleName(tr("Minutes"));
              upDown = makeUpDown(field, 0, 1440);
              tail = named(new QLabel(parts.at(1).trimmed(), m_fraStartup), tailName);
              tail->installEventFilter(this);
              auto *row = new QHBoxLayout;
              row->setSpacing(4);
              row->addWidget(box);
              row->addWidget(field);
              row->addWidget(upDown);
              row->addWidget(tail);
              row->addStretch(1);
              startup->addLayout(row);
          };
    triggerRow(kStartupCaption, m_chkAfterStartup, m_txtStartupDelay, m_udStartupDelay,
               m_lblStartupTail, "chkAfterStartup", "txtStartupDelay", "lblStartupTail");
    triggerRow(kNormalOpsCaption, m_chkAfterNormalOps, m_txtNormalOpsDelay, m_udNormalOpsDelay,
               m_lblNormalOpsTail, "chkAfterNormalOps", "txtNormalOpsDelay", "lblNormalOpsTail");
    m_chkSkipStartupIfOnline = named(new QCheckBox(tr("Do NOT run a 'unit startup' cal check if "
                                                      "an online cal check has already occurred "
                                                      "during the day"),
                                                   m_fraStartup),
                                     "chkSkipStartupIfOnline");
    startup->addWidget(m_chkSkipStartupIfOnline);
    panel->addWidget(m_fraStartup);

    // The 26-operating-hour rule.
    m_fra26 = named(new QGroupBox(tr("40CFR75 CEMS Using Offline Cal Checks for Data Validation"),
                                  m_settingsPanel),
                    "fra26Hours");
    auto *hours = new QGridLayout(m_fra26);
    m_chkEvery26 = named(new QCheckBox(tr("Make sure that an online cal check runs at least every "
                                          "26 unit operating hours (run addtional cal checks as "
                                          "needed)"),
                                       m_fra26),
                         "chkEvery26");
    m_cmdHelp26 = named(new QPushButton(QStringLiteral("?"), m_fra26), "cmdHelp26");
    m_cmdHelp26->setToolTip(tr("About the 26 operating hour rule"));
    m_cmdHelp26->setFixedWidth(28);
    m_lblOnlineStatus = wrappingLabel(QString(), m_fra26, "lblOnlineCalStatus");
    m_lblOnlineStatus->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // Room for the longest line the service writes.
    m_lblOnlineStatus->setMinimumHeight(m_lblOnlineStatus->fontMetrics().lineSpacing() * 2 + 4);
    hours->addWidget(m_chkEvery26, 0, 0);
    hours->addWidget(m_cmdHelp26, 0, 1, Qt::AlignTop);
    hours->addWidget(m_lblOnlineStatus, 1, 0, 1, 2);
    hours->setColumnStretch(0, 1);
    panel->addWidget(m_fra26);

    // Confirmation prompt.
    m_fraConfirm
        = named(new QGroupBox(tr("Calibration Confirmation"), m_settingsPanel), "fraConfirm");
    auto *confirm = new QGridLayout(m_fraConfirm);
    m_chkConfirm = named(new QCheckBox(tr("Wait for user acknowledgement before running "
                                          "calibration"),
                                       m_fraConfirm),
                         "chkConfirm");
    m_cmdHelpConfirm = named(new QPushButton(QStringLiteral("?"), m_fraConfirm), "cmdHelpConfirm");
    m_cmdHelpConfirm->setToolTip(tr("About calibration confirmation"));
    m_cmdHelpConfirm->setFixedWidth(28);
    m_lblWait = named(new QLabel(tr("Wait"), m_fraConfirm), "lblWait");
    m_txtConfirmTimeout = minutesField(m_fraConfirm, "txtConfirmTimeout");
    m_txtConfirmTimeout->setAccessibleName(
        tr("Wait                  minutes before acknowledgment times out"));
    m_lblWait->setBuddy(m_txtConfirmTimeout);
    m_udConfirmTimeout = makeUpDown(m_txtConfirmTimeout, 1, 480);
    m_lblWaitTail = named(new QLabel(tr("minutes before acknowledgment times out"), m_fraConfirm),
                          "lblWaitTail");
    auto *waitRow = new QHBoxLayout;
    waitRow->setSpacing(4);
    waitRow->addSpacing(20);
    waitRow->addWidget(m_lblWait);
    waitRow->addWidget(m_txtConfirmTimeout);
    waitRow->addWidget(m_udConfirmTimeout);
    waitRow->addWidget(m_lblWaitTail);
    waitRow->addStretch(1);
    m_optRunOnTimeout = named(new QRadioButton(tr("Automatically run the calibration if the "
                                                  "acknowledgement timeout expires"),
                                               m_fraConfirm),
                              "optRunOnTimeout");
    m_optSkipOnTimeout = named(new QRadioButton(tr("Automatically skip the calibration if the "
                                                   "acknowledgement timeout expires"),
                                                m_fraConfirm),
                               "optSkipOnTimeout");
    confirm->addWidget(m_chkConfirm, 0, 0);
    confirm->addWidget(m_cmdHelpConfirm, 0, 1, Qt::AlignTop);
    confirm->addLayout(waitRow, 1, 0);
    confirm->addWidget(m_optRunOnTimeout, 2, 0);
    confirm->addWidget(m_optSkipOnTimeout, 3, 0);
    confirm->setColumnStretch(0, 1);
    panel->addWidget(m_fraConfirm);
    panel->addStretch(1);

    // Buttons and the automatic calibration status, outside the scrolled panel: always in view.
    auto *buttons = new QHBoxLayout;
    m_cmdStart = named(new QPushButton(tr("Start Cal Check"), this), "cmdStartCal");
    m_cmdAbort = named(new QPushButton(tr("Abort Cal"), this), "cmdAbortCal");
    m_cmdSave = named(new QPushButton(tr("Save"), this), "cmdSave");
    m_cmdCancel = named(new QPushButton(tr("Cancel"), this), "cmdCancel");
    m_cmdClose = named(new QPushButton(tr("Close"), this), "cmdClose");
    buttons->addWidget(m_cmdStart);
    buttons->addWidget(m_cmdAbort);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdSave);
    buttons->addWidget(m_cmdCancel);
    buttons->addWidget(m_cmdClose);
    right->addLayout(buttons);
    m_lblAutoStatus = named(new QLabel(this), "lblAutoCalStatus");
    m_lblAutoStatus->setFrameShape(QFrame::StyledPanel);
    m_lblAutoStatus->setFrameShadow(QFrame::Sunken);
    m_lblAutoStatus->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_lblAutoStatus->setMinimumHeight(m_lblAutoStatus->fontMetrics().lineSpacing() + 8);
    right->addWidget(m_lblAutoStatus);

    // Edits mark the record dirty; programmatic fills during a load do not.
    for (QCheckBox *box : {m_chkDisable, m_chkSkipOffline, m_chkSkipDailyIfOnline,
                           m_chkSkipStartupIfOnline, m_chkEvery26, m_chkConfirm}) {
        connect(box, &QCheckBox::toggled, this, [this, box] {
            if (box == m_chkDisable || box == m_chkConfirm) {
                applyEnabling();
            }
            edited();
        });
    }
    connect(m_chkAfterStartup, &QCheckBox::toggled, this,
            [this](bool checked) { triggerToggled(true, checked); });
    connect(m_chkAfterNormalOps, &QCheckBox::toggled, this,
            [this](bool checked) { triggerToggled(false, checked); });
    for (QLineEdit *field : {m_txtTime, m_txtStartupDelay, m_txtConfirmTimeout}) {
        connect(field, &QLineEdit::textEdited, this, [this] { edited(); });
    }
    // One delay serves both triggers: the startup field holds what is saved.
    connect(m_txtNormalOpsDelay, &QLineEdit::textEdited, this, [this](const QString &text) {
        m_txtStartupDelay->setText(text);
        edited();
    });
    for (QLineEdit *field :
         {m_txtTime, m_txtStartupDelay, m_txtNormalOpsDelay, m_txtConfirmTimeout}) {
        field->installEventFilter(this);
    }
    connect(m_optRunOnTimeout, &QRadioButton::toggled, this, [this] { edited(); });
    connect(m_cmdTime, &QPushButton::clicked, this, &DICalStart::cmdTime_Click);
    connect(m_cmdHelp26, &QPushButton::clicked, this, &DICalStart::cmdHelp26_Click);
    connect(m_cmdHelpConfirm, &QPushButton::clicked, this, &DICalStart::cmdHelpConfirm_Click);
    connect(m_cmdStart, &QPushButton::clicked, this, &DICalStart::StartCalCheck);
    connect(m_cmdAbort, &QPushButton::clicked, this, &DICalStart::AbortCal);
    connect(m_cmdSave, &QPushButton::clicked, this, &DICalStart::cmdSave_Click);
    connect(m_cmdCancel, &QPushButton::clicked, this, &DICalStart::cmdCancel_Click);
    connect(m_cmdClose, &QPushButton::clicked, this, &DICalStart::cmdClose_Click);

    const int listWidth = fontMetrics().horizontalAdvance(u"(Unit 2) Unit 1 CO2/O2 Cal"_s) + 60;
    m_listArea->setFixedWidth(listWidth);
}

int DICalStart::DesiredWidth() const
{
    const QMargins margins = contentsMargins() + layout()->contentsMargins();
    const int scrollBar = m_settingsArea->verticalScrollBar()->sizeHint().width();
    return margins.left() + margins.right() + m_listArea->width() + layout()->spacing()
           + m_settingsPanel->sizeHint().width() + scrollBar + 4;
}

bool DICalStart::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut) {
        if (auto *field = qobject_cast<QLineEdit *>(watched)) {
            ValidateField(field);
        }
    } else if (event->type() == QEvent::MouseButtonRelease) {
        // The words after a trigger's minutes field belong to its check box.
        if (watched == m_lblStartupTail && m_chkAfterStartup->isEnabled()) {
            m_chkAfterStartup->toggle();
        } else if (watched == m_lblNormalOpsTail && m_chkAfterNormalOps->isEnabled()) {
            m_chkAfterNormalOps->toggle();
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace olvex
