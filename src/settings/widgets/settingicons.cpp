#include "settings/widgets/settingicons.h"

#include "settings/settingdisplay.h"

#include <QString>

// A static library's resources are registered by hand, once, outside any namespace.
static void registerSettingsResources()
{
    static const bool registered = [] {
        Q_INIT_RESOURCE(settings);
        return true;
    }();
    Q_UNUSED(registered);
}

namespace olvex {

namespace {

QIcon resourceIcon(const char *name)
{
    registerSettingsResources();
    return QIcon(u":/olvex/settings/icons/" + QString::fromLatin1(name) + u".svg");
}

} // namespace

QHash<int, QIcon> settingIcons()
{
    // Made per call, not kept in a static: an icon engine must not outlive the application.
    return {
        {SettingIcon::Undefined, resourceIcon("setting-undefined")},
        {SettingIcon::ReadOnly, resourceIcon("setting-readonly")},
        {SettingIcon::ReadOnlyHighLevel, resourceIcon("setting-readonly-high")},
        {SettingIcon::Changeable, resourceIcon("setting-changeable")},
        {SettingIcon::ChangeableHighLevel, resourceIcon("setting-changeable-high")},
        {SettingIcon::WriteOnly, resourceIcon("setting-writeonly")},
        {SettingIcon::WriteOnlyHighLevel, resourceIcon("setting-writeonly-high")},
    };
}

QString settingIconMeaning(int icon)
{
    const QString high = QStringLiteral(" The red mark: a setting of a high level.");
    switch (icon) {
    case SettingIcon::Undefined:
        return QStringLiteral("This PID has no definition on the site.");
    case SettingIcon::ReadOnly:
        return QStringLiteral("Read-only: shown, not changed here.");
    case SettingIcon::ReadOnlyHighLevel:
        return QStringLiteral("Read-only: shown, not changed here.") + high;
    case SettingIcon::Changeable:
        return QStringLiteral("Can be read and changed.");
    case SettingIcon::ChangeableHighLevel:
        return QStringLiteral("Can be read and changed.") + high;
    case SettingIcon::WriteOnly:
        return QStringLiteral("Write-only: a new value can be given, the current one is not "
                              "shown.");
    case SettingIcon::WriteOnlyHighLevel:
        return QStringLiteral("Write-only: a new value can be given, the current one is not "
                              "shown.")
               + high;
    default:
        return {};
    }
}

QIcon groupIcon(bool alarmGroup)
{
    return resourceIcon(alarmGroup ? "alarmgroup" : "group");
}

} // namespace olvex
