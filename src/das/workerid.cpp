#include "das/workerid.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QSysInfo>

namespace olvex {

QString makeWorkerId()
{
    QString host = QSysInfo::machineHostName();
    if (host.isEmpty()) {
        host = QStringLiteral("localhost");
    }
    const quint32 random = QRandomGenerator::system()->generate();
    return host + u':' + QString::number(QCoreApplication::applicationPid()) + u':'
           + QStringLiteral("%1").arg(random, 8, 16, QLatin1Char('0'));
}

} // namespace olvex
