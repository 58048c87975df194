#pragma once

#include <QHash>
#include <QIcon>

namespace olvex {

// The small icons of the settings and alarm lists by number (SettingIcon): undefined, read-only,
// changeable and write-only, each shape and colour different so they tell apart at a glance
// even without colour; the level-above-50 variants add a red badge.
QHash<int, QIcon> settingIcons();

// What a settings row's icon tells the operator; empty for a number without a meaning.
QString settingIconMeaning(int icon);

// The node image of a setting group.
QIcon groupIcon(bool alarmGroup);

} // namespace olvex
