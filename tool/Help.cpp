// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/Help.h"

#include <QHash>

namespace vantiro {

QString generalHelp()
{
    return QStringLiteral(
        R"(vantiro records DJ sets: a whole night as one file, a take, that stays whole whatever happens.

  vantiro record --device UID   record a device until Ctrl-C, with a live meter
  vantiro record --app ID       record what a program plays
  vantiro status                show the running take
  vantiro stop                  end the running take and show its account
  vantiro sources               list what can be recorded from
  vantiro demo                  record a made set from a virtual rig, touching nothing of yours

  vantiro COMMAND --help        how a command is called
  vantiro --version

Exit codes: 0 done, 1 failed, 2 wrong usage.)");
}

QString commandHelp(const QString& command)
{
    static const QHash<QString, QString> texts{
        {QStringLiteral("record"), QStringLiteral(R"(vantiro record (--device UID | --app ID) [options]

Records from a device, or what a program plays, until Ctrl-C (SIGINT) or SIGTERM ends the take, then prints its account.

  --device UID       the device, as 'vantiro sources' names it
  --app ID           the program, as 'vantiro sources' names it
  --channels A,B     its input channels, counted from 1 (default: the first two)
  --format caf|wav   the container (default: caf; WAV ends at 4 GB)
  --out PATH         the take's file (default: named by the clock, in the music folder's "Vantiro")
  --force            if a file stands at PATH, keep it under another name and go on
  --json             print the account as JSON
  --detached         as the window starts it: no meter, standard error is the log)")},
        {QStringLiteral("status"), QStringLiteral(R"(vantiro status [--json]

Shows the take that is being recorded. Exit code 1 if none is.)")},
        {QStringLiteral("stop"), QStringLiteral(R"(vantiro stop [--json]

Ends the running take, waits until it is closed, and shows its account. Exit code 1 if no take is running, or if part
of the take did not reach the disk.)")},
        {QStringLiteral("sources"), QStringLiteral(R"(vantiro sources [--json]

Lists the devices with an input (name, kind, channels, rate, and the UID for --device; a star marks the system's default
input) and the programs that play, with the ID for --app.)")},
        {QStringLiteral("demo"), QStringLiteral(R"(vantiro demo [--folder PATH] [--seconds N]

Starts a private PipeWire graph with a virtual audio interface and a virtual DJ app that play a made set, records both at
once, each with a recorder of its own, kills the programs that started the takes, ends them and shows what came out.
Nothing of your audio or settings is touched.

  --folder PATH      where the takes go (default: a new folder under the current one, vantiro-demo)
  --seconds N        length of the takes, 5 to 600 (default: 15))")},
    };
    return texts.value(command);
}

}  // namespace vantiro
