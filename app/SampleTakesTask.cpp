// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SampleTakesTask.h"

#include "core/takes/SampleTakes.h"

#include <QTextStream>
#include <QTimeZone>

namespace vantiro {

int writeSampleTakes(const QString& folder)
{
    const auto paths = SampleTakes::write(SampleTakes::standard(), folder, QTimeZone::systemTimeZone());
    if (!paths) {
        QTextStream(stderr) << QStringLiteral("could not write the sample takes: %1").arg(errorText(paths.error()))
                            << '\n';
        return 1;
    }
    QTextStream out(stdout);
    for (const QString& path : *paths) {
        out << path << '\n';
    }
    return 0;
}

}  // namespace vantiro
