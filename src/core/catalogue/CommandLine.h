#pragma once

#include <QStringList>

namespace tarnby {

// Splits a command line at blanks and tabs. An argument that begins with a
// double quote runs to the closing quote, blanks included, and loses both
// quotes; an unclosed quote runs to the end of the line.
QStringList splitCommandLine(const QString &commandLine);

// The arguments the program was started with, joined back into one command
// line the way the desktop hands it over (quoting arguments that hold blanks).
QString joinArguments(const QStringList &arguments);

} // namespace tarnby
