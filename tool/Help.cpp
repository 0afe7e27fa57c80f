// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/Help.h"

#include <QHash>

namespace vantiro {

QString generalHelp()
{
    return QStringLiteral(
        R"(vantiro records DJ sets: a whole night as one file, a take, that stays whole whatever happens.

  vantiro record          find the mix and record it until Ctrl-C, with a live meter
  vantiro status          show the running take
  vantiro stop            end the running take and show its account
  vantiro toggle          start a take, or end the running one: for a key of your desktop
  vantiro sources         listen to all inputs and DJ apps, and list them, the likeliest to carry the mix first
  vantiro check           tell what stands in the way of a good take: source, level, sample rate, disk
  vantiro takes           list the takes, the newest first; takes left unfinished are mended
  vantiro analyze FILE    tell what happened in a set: loudness, peak, clipping, dead air, drops and jumps
  vantiro shape FILE      draw the shape of a set, in the terminal or as a picture
  vantiro export FILE     make a copy as WAV, FLAC, Apple Lossless or AAC, or hand one to your music library
  vantiro practice        this week's sets against last week's
  vantiro samples FOLDER  write made takes to try the above with
  vantiro demo            let Vantiro find and record a made set on a virtual rig, touching nothing of yours

  vantiro COMMAND --help  how a command is called
  vantiro --version

Exit codes: 0 done, 1 failed, 2 wrong usage.)");
}

QString commandHelp(const QString& command)
{
    static const QHash<QString, QString> texts{
        {QStringLiteral("record"), QStringLiteral(R"(vantiro record [--device UID | --app ID] [options]

Records from a device, or what a program plays, until Ctrl-C (SIGINT) or SIGTERM ends the take, then prints its account.
Without a source it listens for the mix and picks by itself, as the window does: what was chosen for the connected
hardware before, or else the likeliest of what 'vantiro sources' lists.

  --device UID       the device, as 'vantiro sources' names it
  --app ID           the program, as 'vantiro sources' names it
  --channels A,B     its input channels, counted from 1 (default: the first two)
  --format caf|wav   the container (default: caf; WAV ends at 4 GB)
  --out PATH         the take's file (default: named by the clock, in the takes folder of the settings, which is
                     the music folder's "Vantiro" unless it was changed)
  --force            if a file stands at PATH, keep it under another name and go on
  --json             print the account as JSON
  --detached         as the window starts it: no meter, standard error is the log; needs a source)")},
        {QStringLiteral("status"), QStringLiteral(R"(vantiro status [--json]

Shows the take that is being recorded. Exit code 1 if none is.)")},
        {QStringLiteral("stop"), QStringLiteral(R"(vantiro stop [--json]

Ends the running take, waits until it is closed, and shows its account. Exit code 1 if no take is running, or if part
of the take did not reach the disk.)")},
        {QStringLiteral("toggle"), QStringLiteral(R"(vantiro toggle

Starts a take, or ends the one that is running. If Vantiro's window is open, or waits in the tray, it is asked to do so;
else the take is made without it: of the source that 'vantiro record' would pick, in the format and the takes folder of
the settings. Bind it to a key where a desktop lets no program have one of its own.)")},
        {QStringLiteral("sources"), QStringLiteral(R"(vantiro sources [--no-listen] [--json]

Listens to all inputs and DJ apps for a moment and lists them, the likeliest to carry the mix first: the score and what
earned it, the kind, channels and rate, and the word for --device or --app. The mark ▶ shows what a take would record
that names no source. Programs that are no known DJ apps follow; the file dj-apps.json in Vantiro's data folder, an
array of identifiers or their beginnings, makes them known.

  --no-listen        open nothing: the list as it is without levels
  --json             everything, for programs)")},
        {QStringLiteral("check"), QStringLiteral(R"(vantiro check [--device UID | --app ID] [--json]

Listens for a moment and tells what stands in the way of a good take, with what to do about it: ✓ fine, ! look at it,
✗ wrong. Without a source it checks the one that 'vantiro record' would pick. Exit code 0 if a take can be recorded, 1
if the source or the disk of the takes folder is not there.

  --device UID       the device, as 'vantiro sources' names it
  --app ID           the program, as 'vantiro sources' names it
  --json             the findings as JSON)")},
        {QStringLiteral("takes"), QStringLiteral(R"(vantiro takes [FOLDER] [--json]

Lists the takes of a folder, the newest first: when each began, how long it is, sample rate, channels, size. Without
FOLDER, those of the takes folder of the settings. A take whose recorder was killed is mended first, and that is told;
the take that is being recorded is marked, and left alone. Exit code 1 if the folder is not there.

  --json             the same as JSON)")},
        {QStringLiteral("analyze"), QStringLiteral(R"(vantiro analyze FILE [--json | --review]

Tells what happened in a set: how long and how loud it is, its highest peak, where it clipped, where it was silent for 2
seconds or more, and where the level dropped or jumped by 6 dB or more. Times count from the start of the take. FILE is
a take or another file with audio. What is found in one of the takes folder is kept: the next call is quick.

  --json             everything, a level for each second too
  --review           a request for a judge outside Vantiro: the moments with their facts and the questions about them,
                     as JSON)")},
        {QStringLiteral("shape"), QStringLiteral(R"(vantiro shape FILE [--json | --png OUT [--width N] [--height N]]

Draws the peaks of a set from its start to its end as wide as the terminal, with the time below. Clipped places are red,
or marked with ▼ where there are no colours. FILE is a take or another file with audio.

  --png OUT          a PNG picture instead; of the files that are there it replaces only such pictures
  --width N          of the picture, in pixels, 120 to 8192 (default: 1200)
  --height N         40 to 8192 (default: 240)
  --json             the peaks and the clipped slices)")},
        {QStringLiteral("export"),
            QStringLiteral(R"(vantiro export FILE --format wav|flac|alac|aac [--out PATH] [--force] [--json]
vantiro export FILE --to-music [--inbox FOLDER] [--format ...] [--json]

Makes a copy of a take or of another file with audio. Apple Lossless and AAC carry title, date, album and cover; WAV and
FLAC carry no tags. A copy is there whole or not at all, and Ctrl-C leaves nothing of it. The file itself stays as it
is.

  --format F         wav (24-bit), flac, alac (Apple Lossless) or aac (256 kbps); not needed if the PATH of --out ends
                     in .wav or .flac
  --out PATH         the copy's file, or the folder for it (default: the folder "Copies" in the takes folder for a take
                     of that, else beside FILE)
  --force            if a file stands there, replace it
  --to-music         hand an AAC copy, or Apple Lossless where AAC cannot take the rate or the channels, to the folder
                     that a music library imports from; without --format no other copy stays
  --inbox FOLDER     that folder, or one that holds it (default: that of the settings)
  --json             path, format, bytes and seconds of the copy, and whether the music library has it)")},
        {QStringLiteral("practice"), QStringLiteral(R"(vantiro practice [FOLDER] [--json]

Analyses the takes of a folder that its practice log lacks, adds them to the log, and shows this week against the last:
sets, their length, clips and dead air an hour, loudness. Without FOLDER, the takes folder of the settings. The log is a
hidden file in the folder, .vantiro-practice.json, and remembers takes that are gone. Exit code 1 if a take cannot be
read; the others are added all the same.

  --json             the figures of both weeks and how they changed)")},
        {QStringLiteral("samples"), QStringLiteral(R"(vantiro samples FOLDER [--json]

Writes three made takes with the shape of DJ sets into a folder, which is made if need be, and lists them. Files of
their names (mix-2026-09-25_22-10-04.caf and two more) are replaced.

  --json             the list as JSON)")},
        {QStringLiteral("demo"), QStringLiteral(R"(vantiro demo [--folder PATH] [--seconds N]

Starts a private PipeWire graph with a virtual DJ app that plays a made set, beside a silent interface, a microphone and
a virtual cable with noise on it. Lets Vantiro find the mix among them, records it detached, kills the program that
started the take, ends the take and proves bit by bit that it holds what was played. Makes an AAC copy, and shows what
ffprobe reads there. Nothing of your audio or settings is touched.

  --folder PATH      where the take goes (default: a new folder under the current one, vantiro-demo)
  --seconds N        length of the take, 5 to 600 (default: 15))")},
    };
    return texts.value(command);
}

}  // namespace vantiro
