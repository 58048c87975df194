#pragma once

#include "importexport/windows1252.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace olvex::testutil {

inline QByteArray readBytes(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ADD_FAILURE() << "cannot read " << path.toStdString();
        return {};
    }
    return file.readAll();
}

inline void writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

// The lines of a settings file as the operator's editor would save them: CR LF, Windows-1252.
inline QByteArray settingsFile(const QStringList &lines)
{
    QByteArray bytes;
    for (const QString &line : lines) {
        appendWindows1252(bytes, line);
        bytes.append("\r\n");
    }
    return bytes;
}

// Splits a written file into its lines; fails the test on a line not ended by CR LF.
inline QStringList fileLines(const QByteArray &bytes)
{
    QStringList lines;
    qsizetype from = 0;
    while (from < bytes.size()) {
        const qsizetype end = bytes.indexOf("\r\n", from);
        if (end < 0) {
            ADD_FAILURE() << "last line is not ended by CR LF";
            break;
        }
        const QByteArrayView line = QByteArrayView(bytes).sliced(from, end - from);
        EXPECT_FALSE(line.contains('\n') || line.contains('\r')) << "bare line break";
        lines.append(fromWindows1252(line));
        from = end + 2;
    }
    return lines;
}

} // namespace olvex::testutil
