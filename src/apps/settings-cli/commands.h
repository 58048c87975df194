#pragma once

// The subcommands of olvex-settings. Each parses its own arguments (args[0] is the subcommand's
// name), writes its results to out and its one-line complaints to err, and returns the exit
// code (see cliutil.h).

#include <QStringList>
#include <QTextStream>

#include "cylinder_commands.h"
#include "importexport_commands.h"

namespace olvex::cli {

using CommandFunction = int (*)(const QStringList &args, QTextStream &out, QTextStream &err);

int initDemoCommand(const QStringList &args, QTextStream &out, QTextStream &err);
int infoCommand(const QStringList &args, QTextStream &out, QTextStream &err);
int listCommand(const QStringList &args, QTextStream &out, QTextStream &err);
int getCommand(const QStringList &args, QTextStream &out, QTextStream &err);
int setCommand(const QStringList &args, QTextStream &out, QTextStream &err);

} // namespace olvex::cli
