#pragma once

// Windows-1252, the 8-bit code page of the settings file. Not Latin-1: the bytes 0x80-0x9F hold
// the euro sign, typographic quotes, dashes and the like, which Latin-1 maps to control codes.

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace olvex {

// The five bytes the code page leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) decode to the
// control code of the same number, as Windows itself does, so every byte survives a round trip.
QString fromWindows1252(QByteArrayView bytes);

// True when every character of text has a byte in the code page.
bool fitsWindows1252(QStringView text);

// Characters the code page cannot hold are written as '?'.
QByteArray toWindows1252(QStringView text);
// Appends to out; for writers that build one buffer of many lines.
void appendWindows1252(QByteArray &out, QStringView text);

} // namespace olvex
