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
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

inline void writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)
                && file.write(bytes) == bytes.size())
        << path.toStdString();
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
    EXPECT_TRUE(bytes.isEmpty() || bytes.endsWith("\r\n")) << "last line is not ended by CR LF";
    QStringList lines = fromWindows1252(bytes).split(QStringLiteral("\r\n"));
    lines.removeLast();
    for (const QString &line : lines)
        EXPECT_FALSE(line.contains(u'\n') || line.contains(u'\r')) << "bare line break";
    return lines;
}

} // namespace olvex::testutil
