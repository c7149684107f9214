#pragma once

#include <QStringList>
#include <QTextStream>

namespace corvalent::tool {

// Exit codes of corvalent-tool.
constexpr int kOk = 0;
constexpr int kFailed = 1; // the command ran and did not succeed (a message says why)
constexpr int kUsage = 2;  // the command line is wrong

struct Output {
    QTextStream& out;
    QTextStream& err;
};

int iniGet(const QStringList& args, Output io);
int iniSet(const QStringList& args, Output io);
int request(const QStringList& args, Output io);
int services(const QStringList& args, Output io);
// What capture reads from the running contact manager for a service: one line per slot.
int capture(const QStringList& args, Output io);
// Lists the server's services, installs them into the Presets folder, or deletes installed ones.
int download(const QStringList& args, Output io);

QString usage();

} // namespace corvalent::tool
